#include "tarvobase/get_metadata/GetModuleInfo.h"

namespace tarvo {

void GetModuleInfo::run(std::shared_ptr<const Request> request, UICallback handler) {
    Response response;
    response.modules = request->modules;
    for (auto& [name, info] : datamanager->getModuleInfosByModuleNames(request->modules))
        if (info) response.moduleInfoDict.emplace(name, std::move(info).value());
    handler.onSuccess(std::move(response));
}

}  // namespace tarvo
