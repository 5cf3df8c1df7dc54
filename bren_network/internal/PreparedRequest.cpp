#include "bren_network/internal/PreparedRequest.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "bren_network/internal/Parameters.h"
#include "bren_network/internal/Tuning.h"
#include "bren_network/internal/URLText.h"
#include "platform/Text.h"

namespace bren {

using Kind = NetworkError::Kind;

namespace {

/// A token of the protocol: what a method or the name of a header may consist of.
bool isToken(std::string_view text) {
    auto isTokenCharacter = [](unsigned char c) {
        return c > 0x20 && c < 0x7f && std::string_view("()<>@,;:\\\"/[]?={}").find(char(c)) == std::string_view::npos;
    };
    return !text.empty() && std::ranges::all_of(text, isTokenCharacter);
}

bool breaksLine(std::string_view text) { return text.find_first_of(std::string_view("\r\n\0", 3)) != text.npos; }

bool hasNul(std::string_view text) { return text.find('\0') != text.npos; }

std::optional<NetworkError> wrongHeader(const Headers& headers) {
    for (auto& [name, value] : headers) {
        if (!isToken(name)) return networkError(Kind::other, "a header's name is malformed");
        if (breaksLine(value)) return networkError(Kind::other, "the value of header " + name + " is malformed");
    }
    return std::nullopt;
}

bool canBeRead(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) && std::ifstream(path).good();
}

std::optional<NetworkError> wrongForm(const PreparedRequest& request) {
    for (auto& [name, value] : request.fields)
        if (hasNul(name)) return networkError(Kind::other, "a form field's name is malformed");
    for (auto& file : request.files) {
        if (hasNul(file.fileParamName) || hasNul(file.fileName) || breaksLine(file.fileType))
            return networkError(Kind::other, "a form file's name or type is malformed");
        auto* onDisk = std::get_if<BrenFileUploadInfo::FileURL>(&file.source);
        if (onDisk && !canBeRead(onDisk->path)) return networkError(Kind::file, request.host);
    }
    return std::nullopt;
}

/// Parameters of a GET, or beside a body, travel in the query, all others as a form.
void placeParameters(const tarvo::ValueMap& params, PreparedRequest& request) {
    if (params.empty()) return;
    auto formatted = BrenNetworkManager::formattedParamString(params);
    if (request.body || request.method == "GET" || request.method == "HEAD") {
        request.url = appendQuery(request.url, formatted);
        return;
    }
    request.body = Data(std::move(formatted));
    request.headers.set("Content-Type", "application/x-www-form-urlencoded");
}

}  // namespace

NetworkError networkError(Kind kind, std::string_view about) {
    auto message = std::string(kindName(kind));
    if (!about.empty()) message.append(": ").append(about);
    return {kind, std::move(message)};
}

tarvo::Result<PreparedRequest, NetworkError> prepare(BrenNetworkManager::Task& task,
                                                     std::vector<BrenFileUploadInfo> files, bool isUpload) {
    auto& from = task.request;
    PreparedRequest request;
    request.url = std::move(from.url);
    request.method = isUpload ? "POST" : std::move(from.method);
    request.headers = std::move(from.headers);
    request.timeout = std::min(from.timeout, tuning::longestTimeout);
    request.isStillWanted = std::move(from.isStillWanted);
    auto host = hostAndPort(request.url);
    if (!host) return networkError(Kind::invalidURL, "");
    request.host = std::move(*host);
    if (!isToken(request.method)) return networkError(Kind::other, "the method is malformed");

    if (task.authorization) request.headers.set("Authorization", *task.authorization);
    if (auto wrong = wrongHeader(request.headers)) return *wrong;

    auto params = std::exchange(task.params, std::nullopt).value_or(tarvo::ValueMap());
    if (isUpload) {
        request.fields = plainTexts(params);
        request.files = std::move(files);
        if (auto wrong = wrongForm(request)) return *wrong;
    } else {
        request.body = std::move(from.body);
        placeParameters(params, request);
    }
    return request;
}

}  // namespace bren
