#pragma once

#include "tarvobase/download/ModuleBatch.h"
#include "tarvobase/network_layer/BaseNetworkService.h"

namespace tarvo {

/// Requests the first records of views, one view per module.
class InitCVRecordsNSP : public virtual platform::Object {
public:
    /// Calls back exactly once, on the network queue, unless the service is released before.
    virtual void getCVRecords(const std::vector<CVRecordsParams>& params, NetworkCompletion callback) = 0;
};

class InitCVRecordsNS final : public BaseNetworkService, public InitCVRecordsNSP {
public:
    InitCVRecordsNS() : BaseNetworkService(CRMAPIs::Case::customViewRecords) {}
    void getCVRecords(const std::vector<CVRecordsParams>& params, NetworkCompletion callback) override {
        post({{"cvid", service::listOf(params, [](auto& one) { return one.cv.viewID; })},
              {"module", service::listOf(params, [](auto& one) { return one.module.moduleName; })},
              {"moduleAPI", service::listOf(params, [](auto& one) { return one.module.apiName; })},
              {"cvName", service::listOf(params, [](auto& one) { return one.cv.viewName; })}},
             std::move(callback));
    }
};

}  // namespace tarvo
