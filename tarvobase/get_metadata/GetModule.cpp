#include "tarvobase/get_metadata/GetModule.h"

#include "tarvobase/metadata/Stores.h"

namespace tarvo {

namespace {

using Modules = Result<std::vector<Module>, ParserError>;

Modules listOfOne(Result<Module, ParserError> module) {
    return std::move(module).map([](Module&& found) { return std::vector{std::move(found)}; });
}

Modules modulesFor(const GetModule::Request& request, ModulesPersistanceDelegate& store) {
    using Case = GetModule::Request::Case;
    switch (request.which) {
        case Case::moduleId:
        case Case::moduleName:
            return listOfOne(store.getModuleByModuleName(request.name));
        case Case::apiName:
            return listOfOne(store.getModuleByApiName(request.name));
        case Case::all:
            break;
    }
    return store.getAllModules();
}

}  // namespace

GetModule::GetModule() : GetModule(Stores::current().modules()) {}

void GetModule::run(std::shared_ptr<const Request> request, UICallback handler) {
    auto modules = modulesFor(*request, *databaseService);
    if (!modules) return handler.onError(Failure::unknownError());
    Response response;
    response.moduleList = *std::move(modules);
    response.request = *request;
    handler.onSuccess(std::move(response));
}

}  // namespace tarvo
