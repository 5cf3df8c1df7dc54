#pragma once

#include <variant>

#include "tarvobase/metadata/GetLayoutMetadataDataManager.h"
#include "tarvobase/usecase/BaseDataManager.h"
#include "tarvobase/usecase/Usecase.h"

namespace tarvo {

enum class LayoutRequestType { linear, sectioned, array };

template <>
struct EnumCases<LayoutRequestType> {
    static constexpr EnumCase<LayoutRequestType> cases[] = {{LayoutRequestType::linear, "linear"},
                                                            {LayoutRequestType::sectioned, "sectioned"},
                                                            {LayoutRequestType::array, "array"}};
};

/// The layouts in the requested form, by layout id.
class LayoutResponseType {
public:
    using Linear = GetLayoutMetadataDataManager::LinearLayouts;
    using Sectioned = GetLayoutMetadataDataManager::SectionedLayouts;
    using OrderedList = std::map<std::string, OrderedLayoutFieldList>;

    LayoutResponseType() = default;
    explicit LayoutResponseType(std::variant<Linear, Sectioned, OrderedList> layouts) : layouts_(std::move(layouts)) {}

    /// Each returns null unless the request asked for that form.
    const Linear* linear() const { return std::get_if<Linear>(&layouts_); }
    const Sectioned* sectioned() const { return std::get_if<Sectioned>(&layouts_); }
    const OrderedList* orderedList() const { return std::get_if<OrderedList>(&layouts_); }

private:
    std::variant<Linear, Sectioned, OrderedList> layouts_;
};

/// Types of `GetLayoutMetadataUC`.
struct GetLayoutMetadataOperation {
    struct Request;
    struct Response;
    struct GetLayoutError {
        static constexpr auto fields() { return describe(); }
    };
    using DomainError = GetLayoutError;
};

struct GetLayoutMetadataOperation::Request : BaseRequest {
    Request() = default;
    Request(std::string moduleName, FieldList fieldMetadata, LayoutRequestType type,
            std::optional<DisplayMode> displayMode = std::nullopt)
        : moduleName(std::move(moduleName)),
          fieldMetadata(std::move(fieldMetadata)),
          type(type),
          displayMode(displayMode) {}
    std::string moduleName;
    FieldList fieldMetadata;  ///< the module's fields; layouts show only these
    LayoutRequestType type = LayoutRequestType::array;
    std::optional<DisplayMode> displayMode;  ///< leaves out the fields that it does not show; absent for all
};

struct GetLayoutMetadataOperation::Response : BaseResponse {
    Response() = default;
    explicit Response(LayoutResponseType layoutMetadata) : layoutMetadata(std::move(layoutMetadata)) {}
    LayoutResponseType layoutMetadata;

    static constexpr auto fields() { return describe(field("layoutMetadata", &Response::layoutMetadata)); }
};

class GetLayoutMetadataDM final : public BaseDataManager<GetLayoutMetadataOperation> {
public:
    explicit GetLayoutMetadataDM(std::shared_ptr<GetLayoutMetadataDataManager> layouts) : layouts(std::move(layouts)) {}

    bool getDBResponse(const RequestPtr& request, OnDBSuccess onSuccess, OnDBError onError) override;

    const std::shared_ptr<GetLayoutMetadataDataManager> layouts;
};

/// Answers the layouts of a module from the database that was open when the object was made. Answers once, on the main
/// queue, if the request's source allows the database. A module without layouts is the domain error.
class GetLayoutMetadataUC final : public Usecase<GetLayoutMetadataOperation> {
public:
    using GetLayoutError = GetLayoutMetadataOperation::GetLayoutError;
    GetLayoutMetadataUC()
        : GetLayoutMetadataUC(std::make_shared<GetLayoutMetadataDM>(GetLayoutMetadataDataManager::make())) {}
    explicit GetLayoutMetadataUC(std::shared_ptr<GetLayoutMetadataDM> dataManager)
        : dataManager(std::move(dataManager)) {}

    const std::shared_ptr<GetLayoutMetadataDM> dataManager;

protected:
    void run(std::shared_ptr<const Request> request, UICallback handler) override {
        dataManager->runRequest(request, handler);
    }
};

}  // namespace tarvo
