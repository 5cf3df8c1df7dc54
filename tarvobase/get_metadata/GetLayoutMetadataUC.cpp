#include "tarvobase/get_metadata/GetLayoutMetadataUC.h"

namespace tarvo {

namespace {

using Request = GetLayoutMetadataOperation::Request;

std::optional<LayoutResponseType> layoutsFor(const Request& request, const GetLayoutMetadataDataManager& layouts) {
    auto typed = [](auto found) { return found ? std::optional<LayoutResponseType>(*std::move(found)) : std::nullopt; };
    auto [moduleName, fields, mode] = std::tie(request.moduleName, request.fieldMetadata, request.displayMode);
    switch (request.type) {
        case LayoutRequestType::linear:
            return typed(layouts.getLinearMetadata(moduleName, fields, mode));
        case LayoutRequestType::sectioned:
            return typed(layouts.getSectionedMetadata(moduleName, fields, mode));
        case LayoutRequestType::array:
            break;
    }
    return typed(layouts.getLayoutFieldListDM->getLayoutList(moduleName, fields, mode).success());
}

}  // namespace

bool GetLayoutMetadataDM::getDBResponse(const RequestPtr& request, OnDBSuccess onSuccess, OnDBError onError) {
    auto layoutMetadata = layoutsFor(*request, *layouts);
    if (!layoutMetadata) {
        onError(Failure::domainError({}));
        return false;
    }
    onSuccess(Response(*std::move(layoutMetadata)));
    return true;
}

}  // namespace tarvo
