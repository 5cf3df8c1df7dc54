#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/usecase/BaseDataManager.h"
#include "tarvobase/usecase/Usecase.h"
#include "tarvobase/value_objects/module/ModuleRelatedListPersistanceDelegate.h"

namespace tarvo {

/// Types of `GetRelatedModulesUC`.
struct GetRelatedModulesOperation {
    struct Request;
    struct Response;
    struct GetRelatedModulesError;
    using DomainError = GetRelatedModulesError;
};

struct GetRelatedModulesOperation::Request : BaseRequest {
    Request() = default;
    explicit Request(std::string moduleName) : moduleName(std::move(moduleName)) {}
    std::string moduleName;

    static constexpr auto fields() { return describe(field("moduleName", &Request::moduleName)); }
};

struct GetRelatedModulesOperation::Response : BaseResponse {
    Response() = default;
    explicit Response(std::vector<RelatedList> modules) : modules(std::move(modules)) {}
    std::vector<RelatedList> modules;

    static constexpr auto fields() { return describe(field("modules", &Response::modules)); }
};

/// The module has no related lists, or there is no database.
struct GetRelatedModulesOperation::GetRelatedModulesError {
    std::string moduleUnableToFetch;

    static constexpr auto fields() {
        return describe(field("moduleUnableToFetch", &GetRelatedModulesError::moduleUnableToFetch));
    }
};

/// Reads related lists from the local database that is open at each call.
class GetRelatedModulesDM final : public BaseDataManager<GetRelatedModulesOperation> {
public:
    GetRelatedModulesDM();
    explicit GetRelatedModulesDM(std::shared_ptr<ModuleRelatedListPersistanceDelegate> relatedListPersistance)
        : relatedListPersistance(std::move(relatedListPersistance)) {}

    const std::shared_ptr<ModuleRelatedListPersistanceDelegate> relatedListPersistance;

    bool getDBResponse(const RequestPtr& request, OnDBSuccess onSuccess, OnDBError onError) override;
};

/// Answers the related lists of a module in the order in which its records show them. Answers once, on the main queue,
/// if the request's source allows the database. A module without related lists is a `GetRelatedModulesError`.
class GetRelatedModulesUC final : public Usecase<GetRelatedModulesOperation> {
public:
    using GetRelatedModulesError = GetRelatedModulesOperation::GetRelatedModulesError;
    GetRelatedModulesUC() : dataManager(std::make_shared<GetRelatedModulesDM>()) {}

    const std::shared_ptr<GetRelatedModulesDM> dataManager;

protected:
    void run(std::shared_ptr<const Request> request, UICallback handler) override {
        dataManager->runRequest(request, handler);
    }
};

}  // namespace tarvo
