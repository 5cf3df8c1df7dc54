#pragma once

#include "tarvobase/metadata/GetModuleInfoWithChildDM.h"
#include "tarvobase/usecase/Usecase.h"

namespace tarvo {

/// Types of `GetModuleInfoWithChild`.
struct GetModuleInfoWithChildOperation {
    struct Request;
    struct Response;
    using DomainError = NoDomainError;
};

struct GetModuleInfoWithChildOperation::Request : BaseRequest {
    Request() = default;
    explicit Request(std::vector<std::string> modules) : modules(std::move(modules)) {}
    std::vector<std::string> modules;  ///< module names

    static constexpr auto fields() { return describe(field("modules", &Request::modules)); }
};

struct GetModuleInfoWithChildOperation::Response : BaseResponse {
    GetModuleInfoWithChildDM::Infos moduleInfoDict;  ///< by module name, one entry per name of the request
    std::vector<std::string> modules;                ///< the names of the request

    static constexpr auto fields() {
        return describe(field("moduleInfoDict", &Response::moduleInfoDict), field("modules", &Response::modules));
    }
};

/// Answers modules as `GetModuleInfo` does, with the modules of their subforms. A module that is unknown or has no
/// fields has the entry `notFound`. Answers once, on the main queue, whatever the request's source; never fails as a
/// whole.
class GetModuleInfoWithChild final : public Usecase<GetModuleInfoWithChildOperation> {
public:
    GetModuleInfoWithChild() : GetModuleInfoWithChild(GetModuleInfoWithChildAssembler::getModuleInfoWithChildDM()) {}
    explicit GetModuleInfoWithChild(std::shared_ptr<GetModuleInfoWithChildDM> dataManager)
        : dataManager(std::move(dataManager)) {}

    const std::shared_ptr<GetModuleInfoWithChildDM> dataManager;

protected:
    void run(std::shared_ptr<const Request> request, UICallback handler) override;
};

}  // namespace tarvo
