#pragma once

#include "tarvobase/metadata/GetLayoutMetadataDataManager.h"
#include "tarvobase/usecase/DelegateUseCase.h"

namespace tarvo {

/// Receives the answers of `GetLayoutMetadataUsecase`, on the main queue.
class GetLayoutMetadataUsecaseDelegate : public virtual platform::Object {
public:
    virtual void layoutMetadataFetched(const std::string& moduleName,
                                       const GetLayoutMetadataDataManager::LayoutRows& layouts) {
        static_cast<void>(moduleName), static_cast<void>(layouts);
    }
    virtual void sectionedMetadataFetched(const std::string& moduleName,
                                          const GetLayoutMetadataDataManager::SectionedLayouts& layouts) {
        static_cast<void>(moduleName), static_cast<void>(layouts);
    }
    virtual void linearMetadataFetched(const std::string& moduleName,
                                       const GetLayoutMetadataDataManager::LinearLayouts& layouts) {
        static_cast<void>(moduleName), static_cast<void>(layouts);
    }
    /// The module has no layouts, or there is no database.
    virtual void unableToFetchLayouts(const std::string& moduleName) { static_cast<void>(moduleName); }
};

/// Reports the layouts of a module to a delegate. Each call has one answer: its own, or `unableToFetchLayouts`.
class GetLayoutMetadataUsecase final : public DelegateUseCase<GetLayoutMetadataUsecaseDelegate> {
public:
    GetLayoutMetadataUsecase() : GetLayoutMetadataUsecase(GetLayoutMetadataDataManager::make()) {}
    explicit GetLayoutMetadataUsecase(std::shared_ptr<GetLayoutMetadataDataManager> dataManager)
        : dataManager(std::move(dataManager)) {}

    void getLayoutMetadata(const std::string& moduleName, const FieldList& fieldList,
                           std::optional<DisplayMode> mode = std::nullopt);
    void getSectionedMetadata(const std::string& moduleName, const FieldList& fieldList,
                              std::optional<DisplayMode> mode = std::nullopt);
    void getLinearMetadata(const std::string& moduleName, const FieldList& fieldList,
                           std::optional<DisplayMode> mode = std::nullopt);

    const std::shared_ptr<GetLayoutMetadataDataManager> dataManager;

private:
    struct LayoutRequest;
    template <class Read, class Callback>
    void answerLayouts(LayoutRequest request, Read read, Callback callback);
};

}  // namespace tarvo
