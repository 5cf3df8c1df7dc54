#include "tarvobase/get_metadata/GetLayoutMetadataUsecase.h"

namespace tarvo {

struct GetLayoutMetadataUsecase::LayoutRequest {
    std::string moduleName;
    FieldList fieldList;
    std::optional<DisplayMode> mode;
};

void GetLayoutMetadataUsecase::getLayoutMetadata(const std::string& moduleName, const FieldList& fieldList,
                                                 std::optional<DisplayMode> mode) {
    answerLayouts({moduleName, fieldList, mode}, &GetLayoutMetadataDataManager::getLayoutMetadata,
                  &GetLayoutMetadataUsecaseDelegate::layoutMetadataFetched);
}

void GetLayoutMetadataUsecase::getSectionedMetadata(const std::string& moduleName, const FieldList& fieldList,
                                                    std::optional<DisplayMode> mode) {
    answerLayouts({moduleName, fieldList, mode}, &GetLayoutMetadataDataManager::getSectionedMetadata,
                  &GetLayoutMetadataUsecaseDelegate::sectionedMetadataFetched);
}

void GetLayoutMetadataUsecase::getLinearMetadata(const std::string& moduleName, const FieldList& fieldList,
                                                 std::optional<DisplayMode> mode) {
    answerLayouts({moduleName, fieldList, mode}, &GetLayoutMetadataDataManager::getLinearMetadata,
                  &GetLayoutMetadataUsecaseDelegate::linearMetadataFetched);
}

template <class Read, class Callback>
void GetLayoutMetadataUsecase::answerLayouts(LayoutRequest request, Read read, Callback callback) {
    auto moduleName = request.moduleName;
    answer([manager = dataManager, request = std::move(request),
            read] { return ((*manager).*read)(request.moduleName, request.fieldList, request.mode); },
           [moduleName, callback](GetLayoutMetadataUsecaseDelegate& delegate, const auto& layouts) {
               layouts ? (delegate.*callback)(moduleName, *layouts) : delegate.unableToFetchLayouts(moduleName);
           });
}

}  // namespace tarvo
