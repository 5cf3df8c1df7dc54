#pragma once

#include "tarvobase/metadata/GetModuleInfoWithChildDM.h"
#include "tarvobase/usecase/Usecase.h"

namespace tarvo {

/// The request of `GetLayoutModuleInfo` and `GetLayoutModuleInfoWithChild`.
struct LayoutModuleInfoRequest : BaseRequest {
    LayoutModuleInfoRequest() = default;
    explicit LayoutModuleInfoRequest(std::vector<std::string> modules, std::optional<DisplayMode> mode = std::nullopt)
        : modules(std::move(modules)), mode(mode) {}
    std::vector<std::string> modules;  ///< module names
    std::optional<DisplayMode> mode;   ///< leaves out the fields that it does not show; absent for all

    static constexpr auto fields() {
        return describe(field("modules", &LayoutModuleInfoRequest::modules),
                        field("mode", &LayoutModuleInfoRequest::mode));
    }
};

/// The response of both.
template <class Infos>
struct LayoutModuleInfoResponse : BaseResponse {
    Infos moduleInfoDict;              ///< by module name, one entry per name of the request
    std::vector<std::string> modules;  ///< the names of the request

    static constexpr auto fields() {
        return describe(field("moduleInfoDict", &LayoutModuleInfoResponse::moduleInfoDict),
                        field("modules", &LayoutModuleInfoResponse::modules));
    }
};

struct GetLayoutModuleInfoOperation {
    using Request = LayoutModuleInfoRequest;
    using Response = LayoutModuleInfoResponse<GetLayoutModuleInfoDM::Infos>;
    using DomainError = NoDomainError;
};

/// Answers modules with their fields, permissions, settings and layouts. A module that is unknown, or has no fields or
/// no layouts, has the entry `notFound`. Reads memory and the database that was open when the object was made. Answers
/// once, on the main queue, whatever the request's source; never fails as a whole.
class GetLayoutModuleInfo final : public Usecase<GetLayoutModuleInfoOperation> {
public:
    GetLayoutModuleInfo() : GetLayoutModuleInfo(GetLayoutModuleInfoDM::make()) {}
    explicit GetLayoutModuleInfo(std::shared_ptr<GetLayoutModuleInfoDM> dataManager)
        : dataManager(std::move(dataManager)) {}

    const std::shared_ptr<GetLayoutModuleInfoDM> dataManager;

protected:
    void run(std::shared_ptr<const Request> request, UICallback handler) override;
};

struct GetLayoutModuleInfoWithChildOperation {
    using Request = LayoutModuleInfoRequest;
    using Response = LayoutModuleInfoResponse<GetLayoutModuleInfoWithChildDM::Infos>;
    using DomainError = NoDomainError;
};

/// Answers the same with the modules of the subforms and the layouts of those modules.
class GetLayoutModuleInfoWithChild final : public Usecase<GetLayoutModuleInfoWithChildOperation> {
public:
    GetLayoutModuleInfoWithChild()
        : GetLayoutModuleInfoWithChild(
              std::make_shared<GetLayoutModuleInfoWithChildDM>(GetLayoutModuleInfoDM::make())) {}
    explicit GetLayoutModuleInfoWithChild(std::shared_ptr<GetLayoutModuleInfoWithChildDM> dataManager)
        : dataManager(std::move(dataManager)) {}

    const std::shared_ptr<GetLayoutModuleInfoWithChildDM> dataManager;

protected:
    void run(std::shared_ptr<const Request> request, UICallback handler) override;
};

}  // namespace tarvo
