#pragma once

#include <vector>

#include "tarvobase/network_layer/BaseNetworkService.h"
#include "tarvobase/value_objects/module/Module.h"

namespace tarvo {

/// Requests the views of modules.
class InitCustomViewNSP : public virtual platform::Object {
public:
    /// Calls back exactly once, on the network queue, unless the service is released before.
    virtual void getCustomViews(const std::vector<Module>& modules, NetworkCompletion callback) = 0;
};

class InitCustomViewNS final : public BaseNetworkService, public InitCustomViewNSP {
public:
    InitCustomViewNS() : BaseNetworkService(CRMAPIs::Case::customViews) {}
    void getCustomViews(const std::vector<Module>& modules, NetworkCompletion callback) override {
        post({{"module", service::listOf(modules, &Module::moduleName)},
              {"moduleAPI", service::listOf(modules, &Module::apiName)}},
             std::move(callback));
    }
};

}  // namespace tarvo
