#include "tarvobase/get_metadata/GetLayoutModuleInfo.h"

namespace tarvo {

void GetLayoutModuleInfo::run(std::shared_ptr<const Request> request, UICallback handler) {
    Response response;
    response.modules = request->modules;
    response.moduleInfoDict = dataManager->getModuleInfosByModuleNames(request->modules, request->mode);
    handler.onSuccess(std::move(response));
}

void GetLayoutModuleInfoWithChild::run(std::shared_ptr<const Request> request, UICallback handler) {
    Response response;
    response.modules = request->modules;
    response.moduleInfoDict = dataManager->getModuleInfos(request->modules, request->mode);
    handler.onSuccess(std::move(response));
}

}  // namespace tarvo
