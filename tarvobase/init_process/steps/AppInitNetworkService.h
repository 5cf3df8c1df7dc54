#pragma once

#include <memory>
#include <optional>

#include "tarvobase/init_process/parsers/InitDownloadParser.h"
#include "tarvobase/network_layer/BaseNetworkService.h"

namespace tarvo {

/// Gets what the init call brought, or nothing when there was no usable answer. On the network queue, or on the
/// caller's queue when an answer of the last minute is given again.
class AppInitNetworkServiceDelegate : public virtual platform::Object {
public:
    virtual void initDataParsed(const std::optional<ParsedInitData>& parsed) = 0;
};

class AppInitNetworkServiceProtocol : public virtual platform::Object {
public:
    std::weak_ptr<AppInitNetworkServiceDelegate> initDataDelegate;
    virtual void getAppInitData() = 0;
};

/// Makes the init call. An answer is kept for the process; within a minute of the server's time it is given again to
/// the same account, so that a start that was interrupted costs one call. A transport error reaches `errorHandler` as
/// `networkResponseError`, an answer that cannot be used as `parsingError`; the delegate hears of nothing either way.
class AppInitNetworkService final : public BaseNetworkService, public AppInitNetworkServiceProtocol {
public:
    AppInitNetworkService() : BaseNetworkService(CRMAPIs::Case::appinitdata) {}
    void getAppInitData() override;

private:
    void taskCompletionHandler(NetworkAnswer answer) override;
};

}  // namespace tarvo
