#include <functional>

#include "bridge/DelegateLines.h"
#include "bridge/calls/Calls.h"
#include "bridge/forms/MetadataForms.h"
#include "tarvobase/get_metadata/GetFieldList.h"
#include "tarvobase/get_metadata/GetLayoutMetadataUsecase.h"
#include "tarvobase/get_metadata/GetLayoutModuleInfo.h"
#include "tarvobase/get_metadata/GetModuleInfo.h"
#include "tarvobase/get_metadata/GetModuleInfoWithChild.h"
#include "tarvobase/get_metadata/GetModuleUseCase.h"
#include "tarvobase/get_metadata/GetPermissionsUseCase.h"
#include "tarvobase/get_metadata/GetRelatedModulesUseCase.h"

namespace tarvo::bridge {

namespace {

/// Asks for the layouts of a module, whose fields are read from the database.
struct LayoutsRequest {
    std::string moduleName;
    LayoutRequestType type = LayoutRequestType::array;
    std::optional<DisplayMode> displayMode;
    static constexpr auto fields() {
        return describe(field("moduleName", &LayoutsRequest::moduleName), optionalField("type", &LayoutsRequest::type),
                        field("displayMode", &LayoutsRequest::displayMode));
    }
};
/// Asks for one module by its name, for several, or for all.
struct ModulesRequest {
    std::optional<std::string> moduleName;
    std::optional<std::vector<std::string>> moduleNames;
    static constexpr auto fields() {
        return describe(field("moduleName", &ModulesRequest::moduleName),
                        field("moduleNames", &ModulesRequest::moduleNames));
    }
};
struct PermissionsRequest {
    std::string moduleName;
    std::optional<std::string> permissionName;
    std::optional<std::vector<std::string>> permissionNames;
    static constexpr auto fields() {
        return describe(field("moduleName", &PermissionsRequest::moduleName),
                        field("permissionName", &PermissionsRequest::permissionName),
                        field("permissionNames", &PermissionsRequest::permissionNames));
    }
};
struct RelatedRequest {
    std::string moduleName;
    static constexpr auto fields() { return describe(field("moduleName", &RelatedRequest::moduleName)); }
};

class ModulesLines final : public virtual DelegateLines, public GetModuleUseCaseDelegate {
public:
    void moduleFetched(const Module& module) override { report("moduleFetched", {{"module", toJson(module)}}); }
    void modulesFetched(const std::vector<Module>& modules) override {
        report("modulesFetched", {{"modules", toJson(modules)}});
    }
    void unableToFetchModules(const std::vector<std::string>& moduleNames) override {
        report("unableToFetchModules", {{"moduleNames", toJson(moduleNames)}});
    }
};

class PermissionsLines final : public virtual DelegateLines, public GetPermissionsUseCaseDelegate {
public:
    void permissionFetched(const ModulePermission& permission) override {
        report("permissionFetched", {{"permission", toJson(permission)}});
    }
    void permissionsFetched(const std::string& moduleName, const std::vector<ModulePermission>& permissions) override {
        report("permissionsFetched", {{"moduleName", toJson(moduleName)}, {"permissions", toJson(permissions)}});
    }
    void unableToFetchPermissions(const std::string& moduleName) override {
        report("unableToFetchPermissions", {{"moduleName", toJson(moduleName)}});
    }
};

class RelatedLines final : public virtual DelegateLines, public GetRelatedModulesUseCaseDelegate {
public:
    void relatedModulesFetched(const std::string& moduleName, const std::vector<RelatedList>& modules) override {
        report("relatedModulesFetched", {{"moduleName", toJson(moduleName)}, {"modules", toJson(modules)}});
    }
    void unableToFetchRelatedModules(const std::string& moduleName) override {
        report("unableToFetchRelatedModules", {{"moduleName", toJson(moduleName)}});
    }
};

class LayoutsLines final : public virtual DelegateLines, public GetLayoutMetadataUsecaseDelegate {
public:
    void layoutMetadataFetched(const std::string& moduleName,
                               const GetLayoutMetadataDataManager::LayoutRows& layouts) override {
        report("layoutMetadataFetched", {{"moduleName", toJson(moduleName)}, {"layouts", toJson(layouts)}});
    }
    void sectionedMetadataFetched(const std::string& moduleName,
                                  const GetLayoutMetadataDataManager::SectionedLayouts& layouts) override {
        report("sectionedMetadataFetched", {{"moduleName", toJson(moduleName)}, {"layouts", toJson(layouts)}});
    }
    void linearMetadataFetched(const std::string& moduleName,
                               const GetLayoutMetadataDataManager::LinearLayouts& layouts) override {
        report("linearMetadataFetched", {{"moduleName", toJson(moduleName)}, {"layouts", toJson(layouts)}});
    }
    void unableToFetchLayouts(const std::string& moduleName) override {
        report("unableToFetchLayouts", {{"moduleName", toJson(moduleName)}});
    }
};

/// Reads the fields of a module and passes them on; an unknown module has an empty list.
void withFields(const std::string& moduleName, std::function<void(const FieldList&)> then) {
    std::make_shared<GetFieldList>()->execute(
        GetFieldList::Request(moduleName),
        [then = std::move(then)](const GetFieldList::Response* response, const GetFieldList::Failure*) {
            then(response ? response->fieldList : FieldList());
        });
}

void getLayouts(const LayoutsRequest& request, const CallPtr& call) {
    withFields(request.moduleName, [request, call](const FieldList& fields) {
        auto usecase = std::make_shared<GetLayoutMetadataUC>();
        call->keepUntilEnd(usecase);
        usecase->execute(GetLayoutMetadataUC::Request(request.moduleName, fields, request.type, request.displayMode),
                         Registry::callbackOf<GetLayoutMetadataUC>(call));
    });
}

void reportLayouts(const LayoutsRequest& request, const CallPtr& call) {
    auto usecase = answeringOnce<LayoutsLines>(std::make_shared<GetLayoutMetadataUsecase>(), call);
    withFields(request.moduleName, [request, usecase](const FieldList& fields) {
        auto& [moduleName, type, mode] = request;
        if (type == LayoutRequestType::linear)
            usecase->getLinearMetadata(moduleName, fields, mode);
        else if (type == LayoutRequestType::sectioned)
            usecase->getSectionedMetadata(moduleName, fields, mode);
        else
            usecase->getLayoutMetadata(moduleName, fields, mode);
    });
}

void getModules(const ModulesRequest& request, const CallPtr& call) {
    auto usecase = answeringOnce<ModulesLines>(std::make_shared<GetModuleUseCase>(), call);
    if (request.moduleName)
        usecase->getModule(*request.moduleName);
    else if (request.moduleNames)
        usecase->getModulesWith(*request.moduleNames);
    else
        usecase->getAllModules();
}

void getPermissions(const PermissionsRequest& request, const CallPtr& call) {
    auto usecase = answeringOnce<PermissionsLines>(std::make_shared<GetPermissionsUseCase>(), call);
    if (request.permissionName)
        usecase->getPermission(request.moduleName, *request.permissionName);
    else if (request.permissionNames)
        usecase->getPermissions(request.moduleName, *request.permissionNames);
    else
        usecase->getPermissions(request.moduleName);
}

}  // namespace

void addMetadataCalls(Registry& registry) {
    registry.addUsecase<GetFieldList>("GetFieldList");
    registry.addUsecase<GetModuleInfo>("GetModuleInfo");
    registry.addUsecase<GetModuleInfoWithChild>("GetModuleInfoWithChild");
    registry.addUsecase<GetLayoutModuleInfo>("GetLayoutModuleInfo");
    registry.addUsecase<GetLayoutModuleInfoWithChild>("GetLayoutModuleInfoWithChild");
    registry.addOperation<LayoutsRequest>("GetLayoutMetadataUC", getLayouts);
    registry.addOperation<LayoutsRequest>("GetLayoutMetadataUsecase", reportLayouts);
    registry.addOperation<ModulesRequest>("GetModuleUseCase", getModules);
    registry.addOperation<PermissionsRequest>("GetPermissionsUseCase", getPermissions);
    registry.addOperation<RelatedRequest>(
        "GetRelatedModulesUseCase", [](const RelatedRequest& request, const CallPtr& call) {
            answeringOnce<RelatedLines>(std::make_shared<GetRelatedModulesUseCase>(), call)
                ->getRelatedModules(request.moduleName);
        });
}

}  // namespace tarvo::bridge
