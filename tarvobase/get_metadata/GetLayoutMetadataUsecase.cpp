#include "tarvobase/get_metadata/GetLayoutMetadataUsecase.h"

namespace tarvo {

struct GetLayoutMetadataUsecase::Question {
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

template <class Ask, class Tell>
void GetLayoutMetadataUsecase::answerLayouts(Question question, Ask ask, Tell tell) {
    auto moduleName = question.moduleName;
    answer([manager = dataManager, question = std::move(question),
            ask] { return ((*manager).*ask)(question.moduleName, question.fieldList, question.mode); },
           [moduleName, tell](GetLayoutMetadataUsecaseDelegate& delegate, const auto& layouts) {
               layouts ? (delegate.*tell)(moduleName, *layouts) : delegate.unableToFetchLayouts(moduleName);
           });
}

}  // namespace tarvo
