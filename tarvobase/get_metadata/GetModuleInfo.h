#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tarvobase/metadata/GetModuleInfoDataManager.h"
#include "tarvobase/usecase/Usecase.h"

namespace tarvo {

/// Types of `GetModuleInfo`.
struct GetModuleInfoOperation {
    struct Request;
    struct Response;
    using DomainError = NoDomainError;
};

struct GetModuleInfoOperation::Request : BaseRequest {
    Request() = default;
    explicit Request(std::vector<std::string> modules) : modules(std::move(modules)) {}
    std::vector<std::string> modules;  ///< module names

    static constexpr auto fields() { return describe(field("modules", &Request::modules)); }
};

struct GetModuleInfoOperation::Response : BaseResponse {
    std::map<std::string, ModuleInfo> moduleInfoDict;  ///< by module name
    std::vector<std::string> modules;                  ///< the names of the request

    static constexpr auto fields() {
        return describe(field("moduleInfoDict", &Response::moduleInfoDict), field("modules", &Response::modules));
    }
};

/// Answers modules with their fields, permissions and settings. A module that is unknown or has no fields is missing
/// from the answer; the caller can compare it with `modules`. Reads memory and the database that was open when the
/// object was made. Answers once, on the main queue, whatever the request's source; never fails.
class GetModuleInfo final : public Usecase<GetModuleInfoOperation> {
public:
    GetModuleInfo() : GetModuleInfo(GetModuleInfoAssembler::getModuleInfoDM()) {}
    explicit GetModuleInfo(std::shared_ptr<GetModuleInfoDataManager> datamanager)
        : datamanager(std::move(datamanager)) {}

    const std::shared_ptr<GetModuleInfoDataManager> datamanager;

protected:
    void run(std::shared_ptr<const Request> request, UICallback handler) override;
};

}  // namespace tarvo
