#include "tarvobase/network_layer/NetworkAdapter.h"

#include "bren_network/BrenNetworkManager.h"
#include "platform/Log.h"
#include "tarvobase/network_layer/ServiceRequests.h"

namespace tarvo {

namespace {

using bren::BrenNetworkManager;

constexpr std::chrono::seconds requestTimeout{60};

bren::BrenTaskPriority libraryPriority(NTaskPriority priority) {
    switch (priority) {
        case NTaskPriority::low:
            return bren::BrenTaskPriority::low;
        case NTaskPriority::high:
            return bren::BrenTaskPriority::high;
        default:
            return bren::BrenTaskPriority::normal;
    }
}

std::optional<URLRequest> requestFor(const std::string& url, HTTPMethod method) {
    if (!bren::isValidURL(url)) {
        platform::log(platform::LogLevel::warning, "network",
                      "Coult not generate url with given string: " + bren::withoutQuery(url));
        return std::nullopt;
    }
    return URLRequest{
        .url = url, .method = std::string(rawText(method)), .headers = {}, .body = {}, .timeout = requestTimeout};
}

BrenNetworkManager::ProgressPercentHandler percentHandlerFor(PercentHandler handler) {
    if (!handler) return nullptr;
    return [handler = std::move(handler)](float part, std::int64_t done, std::int64_t total, std::optional<std::string>,
                                          int) { handler(part, done, total); };
}

BrenNetworkManager::ProgressDataHandler progressHandlerFor(ProgressHandler handler) {
    if (!handler) return nullptr;
    return [handler = std::move(handler)](Data piece, double part, std::optional<std::string>, int) {
        handler(std::move(piece), part);
    };
}

BrenNetworkManager::CompletionHandler completionFor(NetworkCompletion completion,
                                                    std::optional<std::string> identifier) {
    if (!completion) return nullptr;
    return [completion = std::move(completion), identifier = std::move(identifier)](
               Data data, std::optional<URLResponse> response, std::optional<NetworkError> error, int taskNumber) {
        completion({std::move(data), std::move(response), identifier, std::move(error), taskNumber});
    };
}

BrenNetworkManager::Task taskFor(NetworkCall call) {
    BrenNetworkManager::Task task;
    task.request = std::move(call.request);
    task.authorization = std::move(call.authorization);
    task.params = std::move(call.params);
    task.priority = libraryPriority(call.priority);
    task.identifier = call.identifier;
    task.progressPercent = percentHandlerFor(std::move(call.percentHandler));
    task.progressData = progressHandlerFor(std::move(call.progressHandler));
    task.completion = completionFor(std::move(call.completionHandler), std::move(call.identifier));
    return task;
}

}  // namespace

void completeUnsent(const NetworkCompletion& completion, const std::optional<std::string>& identifier,
                    NetworkError error) {
    if (!completion) return;
    BrenNetworkManager::sharedInstance().queue()->async(
        [completion, identifier, error = std::move(error)] { completion({.identifier = identifier, .error = error}); });
}

void NetworkAdapter::sendWithHeaders(NetworkCall call, const bren::Headers& headers) {
    service::addHeaders(call.request.headers, headers);
    call.authorization.reset();
    send(std::move(call));
}

void NetworkAdapter::sendUrl(const std::string& url, HTTPMethod method, NetworkCall call,
                             const bren::Headers& headers) {
    auto request = requestFor(url, method);
    if (!request) return completeUnsent(call.completionHandler, call.identifier, service::invalidURL());
    call.request = *std::move(request);
    sendWithHeaders(std::move(call), headers);
}

void NetworkAdapter::downloadUrl(const std::string& url, HTTPMethod method, NetworkCall call) {
    auto request = requestFor(url, method);
    if (!request) return completeUnsent(call.completionHandler, call.identifier, service::invalidURL());
    call.request = *std::move(request);
    download(std::move(call));
}

void BrenNetworkManagerAdapter::send(NetworkCall call) {
    BrenNetworkManager::sharedInstance().send(taskFor(std::move(call)));
}

void BrenNetworkManagerAdapter::download(NetworkCall call) {
    call.priority = NTaskPriority::normal;
    BrenNetworkManager::sharedInstance().download(taskFor(std::move(call)));
}

void BrenNetworkManagerAdapter::upload(NetworkUpload upload) {
    BrenNetworkManager::Task task;
    task.request = {.url = bren::encodeURLIfNotValid(upload.url),
                    .method = "POST",
                    .headers = {},
                    .body = {},
                    .timeout = requestTimeout,
                    .isStillWanted = std::move(upload.isStillWanted)};
    for (auto& [name, value] : upload.headers) task.request.headers.add(name, value);
    task.params = std::move(upload.params);
    task.priority = libraryPriority(upload.priority);
    task.progressPercent = percentHandlerFor(std::move(upload.percentHandler));
    task.progressData = progressHandlerFor(std::move(upload.progressHandler));
    task.completion = completionFor(std::move(upload.completionHandler), std::nullopt);
    bren::BrenFileUploadInfo file{
        std::move(upload.fileParamName), std::move(upload.fileName), {}, std::move(upload.fileType)};
    if (auto path = std::get_if<std::string>(&upload.source))
        file.source = bren::BrenFileUploadInfo::FileURL{std::move(*path)};
    else
        file.source = std::get<Data>(std::move(upload.source));
    BrenNetworkManager::sharedInstance().sendUploadRequest(std::move(task), {std::move(file)});
}

}  // namespace tarvo
