#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>

#include "bren_network/internal/Delivery.h"
#include "bren_network/internal/PreparedRequest.h"
#include "platform/Clock.h"

namespace bren {

/// What the manager lends to every transfer.
struct TransferSettings {
    /// PEM text of all trusted certificates; null means the system's.
    std::shared_ptr<const std::string> authorities;
    std::string userAgent;
    /// The largest body in bytes, unpacked.
    std::size_t maximumBody = 0;
};

/// One request on libcurl: its handle, what goes out, and what has come in. Made on any thread, from `begin` on used by
/// the thread of the transfers alone.
class Transfer {
public:
    Transfer(PreparedRequest request, TransferSettings settings, std::shared_ptr<Delivery> delivery);
    ~Transfer();
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    /// Sets up the handle. False when memory is short or a file has gone.
    bool begin();
    CURL* handle() const { return easy_; }
    const std::string& host() const { return request_.host; }
    const std::shared_ptr<Delivery>& delivery() const { return delivery_; }

    /// When the transfer is to be ended unless bytes move before.
    tarvo::platform::Clock::SteadyTime deadline() const { return lastProgress_ + request_.timeout; }

    /// The outcome after libcurl has ended the transfer.
    Outcome finish(CURLcode code);
    /// The outcome of a transfer that is ended from outside.
    Outcome fail(NetworkError::Kind kind);

private:
    void setConnectionOptions();
    void setTrust();
    bool setRequest();
    bool setForm();
    bool setHeaders();
    std::optional<URLResponse> takeResponse();
    void noteProgress() { lastProgress_ = tarvo::platform::Clock::steadyNow(); }
    bool isRepeatable() const { return request_.method == "GET" || request_.method == "HEAD"; }

    void headerArrived(std::string_view line);
    bool bodyArrived(std::string_view piece);
    bool isAboutToSend();
    void moved(std::int64_t down, std::int64_t up, std::int64_t upTotal);
    void tellWholeLength();
    NetworkError errorOf(CURLcode code) const;
    template <class F>
    std::size_t guarded(std::size_t size, F&& take) noexcept;

    static std::size_t onHeader(char* bytes, std::size_t size, std::size_t count, void* self);
    static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* self);
    static int onAboutToSend(void* self, char*, char*, int, int);
    static int onMoved(void* self, curl_off_t downTotal, curl_off_t down, curl_off_t upTotal, curl_off_t up);

    PreparedRequest request_;
    TransferSettings settings_;
    std::shared_ptr<Delivery> delivery_;
    CURL* easy_ = nullptr;
    curl_slist* headerLines_ = nullptr;
    curl_mime* form_ = nullptr;

    URLResponse response_;
    std::string body_;
    tarvo::platform::Clock::SteadyTime lastProgress_{};
    std::int64_t down_ = 0;
    std::int64_t up_ = 0;
    bool lengthKnown_ = false;
    bool isUnanswered_ = false;
    bool wasRepeated_ = false;
    /// Why a callback of this class has ended the transfer.
    std::optional<NetworkError::Kind> ownFailure_;
};

}  // namespace bren
