#pragma once

#include <memory>
#include <optional>

#include "tarvobase/network_layer/BaseNetworkService.h"

namespace tarvo {

struct ParsedInitData;

/// Receives the answer of the init call, or nullopt if there was no usable answer. Called on the network queue, or on
/// the caller's queue if an answer of the last minute is reused.
class AppInitNetworkServiceDelegate : public virtual platform::Object {
public:
    virtual void initDataParsed(const std::optional<ParsedInitData>& parsed) = 0;
};

class AppInitNetworkServiceProtocol : public virtual platform::Object {
public:
    std::weak_ptr<AppInitNetworkServiceDelegate> initDataDelegate;
    virtual void getAppInitData() = 0;
};

/// Makes the init call. The process keeps a usable answer and reuses it for the same account and organisation within a
/// minute of the server's time, so that an interrupted start costs one call. `errorHandler` receives
/// `networkResponseError` after a transport error and `parsingError` after an unusable answer; the delegate receives
/// nullopt in both cases.
class AppInitNetworkService final : public BaseNetworkService, public AppInitNetworkServiceProtocol {
public:
    AppInitNetworkService() : BaseNetworkService(CRMAPIs::Case::appinitdata) {}
    void getAppInitData() override;

private:
    void taskCompletionHandler(NetworkAnswer answer) override;
};

}  // namespace tarvo
