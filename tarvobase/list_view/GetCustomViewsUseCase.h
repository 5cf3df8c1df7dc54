#pragma once

#include "tarvobase/list_view/GetCustomViewsDataManager.h"
#include "tarvobase/usecase/DelegateUseCase.h"

namespace tarvo {

/// Receives the answers of `GetCustomViewsUseCase`, on the main queue.
class GetCustomViewsUseCaseDelegate : public virtual platform::Object {
public:
    using CustomViews = CustomViewPersistanceDelegate::CustomViews;

    virtual void sortFieldUpdated(const std::string& cvId, const std::string& moduleName) {
        static_cast<void>(cvId), static_cast<void>(moduleName);
    }
    /// The list is absent if the database could not be read.
    virtual void customViews(const std::optional<CustomViews>& customViews, const std::string& moduleName) {
        static_cast<void>(customViews), static_cast<void>(moduleName);
    }
    /// The view is absent if there is no such view. The same holds for the other answers with one view.
    virtual void customView(const std::optional<CustomView>& customView, const std::string& cvId,
                            const std::string& moduleName) {
        static_cast<void>(customView), static_cast<void>(cvId), static_cast<void>(moduleName);
    }
    virtual void allViewCustomView(const std::optional<CustomView>& customView, const std::string& moduleName) {
        static_cast<void>(customView), static_cast<void>(moduleName);
    }
    virtual void defaultFieldUpdated(const std::string& cvId, const std::string& moduleName) {
        static_cast<void>(cvId), static_cast<void>(moduleName);
    }
    virtual void defaultCustomView(const std::optional<CustomView>& customView, const std::string& moduleName) {
        static_cast<void>(customView), static_cast<void>(moduleName);
    }
};

class GetCustomViewsUseCaseProtocol : public virtual platform::Object {
public:
    virtual void getCustomViews(const std::string& moduleName) = 0;
    virtual void getCustomViews(const std::string& moduleName, const std::vector<CustomViewColumnName>& sortBy) = 0;
    virtual void getCustomView(const std::string& id, const std::string& moduleName) = 0;
    virtual void getDefaultCustomView(const std::string& moduleName) = 0;
    virtual void getAllViewCustomView(const std::string& moduleName) = 0;
    virtual void setAsDefaultCustomView(const std::string& cvId, const std::string& moduleName) = 0;
    virtual void updateSortField(const SortField& sortField, const std::string& cvId,
                                 const std::string& moduleName) = 0;
};

/// Reads and changes views of the local database and reports to a delegate. Each call is answered once.
class GetCustomViewsUseCase final : public DelegateUseCase<GetCustomViewsUseCaseDelegate>,
                                    public GetCustomViewsUseCaseProtocol {
public:
    /// Uses the database that is open at this moment.
    GetCustomViewsUseCase() : GetCustomViewsUseCase(GetCustomViewsDataManager::current()) {}
    explicit GetCustomViewsUseCase(std::shared_ptr<GetCustomViewsDataManagerProtocol> dataManager)
        : dataManager(std::move(dataManager)) {}

    void getCustomViews(const std::string& moduleName) override;
    void getCustomViews(const std::string& moduleName, const std::vector<CustomViewColumnName>& sortBy) override;
    void getCustomView(const std::string& id, const std::string& moduleName) override;
    void getDefaultCustomView(const std::string& moduleName) override;
    void getAllViewCustomView(const std::string& moduleName) override;
    void setAsDefaultCustomView(const std::string& cvId, const std::string& moduleName) override;
    void updateSortField(const SortField& sortField, const std::string& cvId, const std::string& moduleName) override;

    const std::shared_ptr<GetCustomViewsDataManagerProtocol> dataManager;
};

}  // namespace tarvo
