#include "bren_network/internal/Authorities.h"

#include <curl/curl.h>

#include "platform/Files.h"
#include "platform/Log.h"

namespace bren {

namespace files = tarvo::platform::files;

namespace {

std::string systemCertificates() {
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy(curl_easy_init(), &curl_easy_cleanup);
    char* path = nullptr;
    if (!easy || curl_easy_getinfo(easy.get(), CURLINFO_CAINFO, &path) != CURLE_OK || !path) return {};
    auto bundle = files::read(path);
    return bundle ? bundle->text() + "\n" : std::string();
}

}  // namespace

bool Authorities::setFurtherFile(const std::string& path) {
    std::shared_ptr<const std::string> combined;
    if (!path.empty()) {
        auto further = files::read(path);
        if (!further || further->view().find("-----BEGIN CERTIFICATE-----") == std::string_view::npos) {
            tarvo::platform::log(tarvo::platform::LogLevel::warning, "network",
                                 "The file of further authorities holds no certificate that can be read");
            return false;
        }
        combined = std::make_shared<const std::string>(systemCertificates() + further->text());
    }
    tarvo::platform::MutexLock lock(mutex_);
    combined_.swap(combined);
    return true;
}

std::shared_ptr<const std::string> Authorities::combined() const {
    tarvo::platform::MutexLock lock(mutex_);
    return combined_;
}

}  // namespace bren
