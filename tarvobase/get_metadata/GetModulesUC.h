#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "tarvobase/usecase/BaseDataManager.h"
#include "tarvobase/usecase/Usecase.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"

namespace tarvo {

/// Types of `GetModulesUC`.
struct GetModulesOperation {
    struct Request;
    struct Response;
    struct GetModulesError;
    using DomainError = GetModulesError;
};

struct GetModulesOperation::Request : BaseRequest {
    Request() = default;
    explicit Request(std::vector<std::string> moduleNames) : moduleNames(std::move(moduleNames)) {}
    std::vector<std::string> moduleNames;

    static constexpr auto fields() { return describe(field("moduleNames", &Request::moduleNames)); }
};

struct GetModulesOperation::Response : BaseResponse {
    Response() = default;
    explicit Response(std::vector<Module> modules) : modules(std::move(modules)) {}
    std::vector<Module> modules;

    static constexpr auto fields() { return describe(field("modules", &Response::modules)); }
};

/// There is no store of modules, so none of the requested modules could be fetched.
struct GetModulesOperation::GetModulesError {
    std::vector<std::string> modulesUnableToFetch;

    static constexpr auto fields() {
        return describe(field("modulesUnableToFetch", &GetModulesError::modulesUnableToFetch));
    }
};

/// Reads modules from the local database.
class GetModulesDM : public BaseDataManager<GetModulesOperation> {
public:
    bool getDBResponse(const RequestPtr& request, OnDBSuccess onSuccess, OnDBError onError) override;

private:
    /// Returns the store of modules, which is made at the first call and kept. It stays null if no database was open
    /// then.
    std::shared_ptr<ModulesPersistanceDelegate> modulesPersistance();

    std::once_flag decided_;
    std::shared_ptr<ModulesPersistanceDelegate> modulesPersistance_;
};

/// Answers the named modules from the local database, in the order of the request. A name that is given twice yields
/// its module twice. A name that no module has is left out silently; the caller can compare. Answers once, on the main
/// queue. Fails with `GetModulesError`, which holds all names, if no database was open at the object's first call.
class GetModulesUC final : public Usecase<GetModulesOperation> {
public:
    using GetModulesError = GetModulesOperation::GetModulesError;
    GetModulesUC() : dataManager(std::make_shared<GetModulesDM>()) {}

    const std::shared_ptr<GetModulesDM> dataManager;

protected:
    void run(std::shared_ptr<const Request> request, UICallback handler) override {
        dataManager->runRequest(request, handler);
    }
};

}  // namespace tarvo
