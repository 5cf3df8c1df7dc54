#include "tarvobase/get_metadata/GetModuleInfoWithChild.h"

namespace tarvo {

void GetModuleInfoWithChild::run(std::shared_ptr<const Request> request, UICallback handler) {
    Response response;
    response.modules = request->modules;
    response.moduleInfoDict = dataManager->getModuleInfos(request->modules);
    handler.onSuccess(std::move(response));
}

}  // namespace tarvo
