#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/usecase/Usecase.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"

namespace tarvo {

/// Types of `GetModule`.
struct GetModuleOperation {
    struct Request;
    struct Response;
    using DomainError = NoDomainError;
};

/// Asks for one module by one of its names, or for all modules.
struct GetModuleOperation::Request : BaseRequest {
    enum class Case { moduleId, moduleName, apiName, all };

    static Request moduleId(const ModuleIdentifier& identifier) { return {Case::moduleId, identifier.rawValue()}; }
    static Request moduleName(std::string name) { return {Case::moduleName, std::move(name)}; }
    static Request apiName(std::string name) { return {Case::apiName, std::move(name)}; }
    static Request all() { return {}; }

    Request() = default;
    Case which = Case::all;
    std::string name;  ///< empty for all modules

    static constexpr auto fields() {
        return describe(optionalField("which", &Request::which), optionalField("name", &Request::name));
    }

private:
    Request(Case which, std::string name) : which(which), name(std::move(name)) {}
};

template <>
struct EnumCases<GetModuleOperation::Request::Case> {
    using C = GetModuleOperation::Request::Case;
    static constexpr EnumCase<C> cases[] = {
        {C::moduleId, "moduleId"}, {C::moduleName, "moduleName"}, {C::apiName, "apiName"}, {C::all, "all"}};
};

struct GetModuleOperation::Response : BaseResponse {
    std::vector<Module> moduleList;
    Request request;

    static constexpr auto fields() {
        return describe(field("moduleList", &Response::moduleList), field("request", &Response::request));
    }
};

/// Answers one module as a list of one, or all modules in no particular order. Reads memory, then the database that was
/// open when the object was made. Answers once, on the main queue, whatever the request's source. A failed read is
/// `unknownError`, and so is a name that no module has.
class GetModule final : public Usecase<GetModuleOperation> {
public:
    GetModule();
    explicit GetModule(std::shared_ptr<ModulesPersistanceDelegate> databaseService)
        : databaseService(std::move(databaseService)) {}

    const std::shared_ptr<ModulesPersistanceDelegate> databaseService;

protected:
    void run(std::shared_ptr<const Request> request, UICallback handler) override;
};

}  // namespace tarvo
