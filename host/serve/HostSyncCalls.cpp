#include "host/serve/HostSyncCalls.h"

#include <algorithm>

#include "bridge/forms/JsonForm.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/sync/RecordsSyncDataManager.h"

namespace tarvo::host {

namespace {

using bridge::CallPtr;
using bridge::toJson;

struct RoundsRequest {
    std::optional<std::vector<std::string>> moduleNames;  // all if absent
    static constexpr auto fields() { return describe(field("moduleNames", &RoundsRequest::moduleNames)); }
};
struct StopSyncRequest {
    static constexpr auto fields() { return describe(); }
};

void rounds(const RoundsRequest& request, const CallPtr& call) {
    auto rounds = RecordsSyncDataManager::rounds(Stores::current());
    if (auto& names = request.moduleNames)
        std::erase_if(rounds, [&](auto& round) {
            return std::find(names->begin(), names->end(), round.moduleName) == names->end();
        });
    call->done("response", ValueMap{{"rounds", toJson(rounds)}});
}

}  // namespace

void addSyncStateCalls(bridge::Registry& registry) {
    registry.addOperation<RoundsRequest>("host.sync.rounds", rounds);
    registry.addOperation<StopSyncRequest>("host.sync.stop", [](StopSyncRequest, const CallPtr& call) {
        SyncRounds::shared().stop([call] { call->done(); });
    });
}

}  // namespace tarvo::host
