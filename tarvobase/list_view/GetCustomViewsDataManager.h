#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/records/FilterRecordMapPersistanceDelegate.h"
#include "tarvobase/utils/UserDefaultsUtil.h"
#include "tarvobase/value_objects/view/CustomViewPersistanceDelegate.h"

namespace tarvo {

class DatabaseAdapter;

/// Reads and changes the views of the local database. May be called from any thread. The observers of `CVObserver` are
/// notified of a change on the bus's background queue.
class GetCustomViewsDataManagerProtocol : public virtual platform::Object {
public:
    using CustomViews = CustomViewPersistanceDelegate::CustomViews;

    /// Returns nullopt if the database cannot be read.
    virtual std::optional<CustomViews> getCustomViews(const std::string& moduleName) = 0;
    virtual std::optional<CustomViews> getCustomViews(const std::string& moduleName,
                                                      const std::vector<CustomViewColumnName>& sortBy) = 0;
    virtual std::optional<CustomView> getCustomView(const std::string& id, const std::string& moduleName) = 0;
    /// Returns the view that is marked as default, or else the first stored one. Returns nullopt if the module has no
    /// views.
    virtual std::optional<CustomView> getDefaultCustomView(const std::string& moduleName) = 0;
    virtual std::optional<CustomView> getAllViewCustomView(const std::string& moduleName) = 0;
    virtual void setAsDefaultCustomView(const std::string& cvId, const std::string& moduleName) = 0;
    /// Changes the order of a view. The stored ids follow the old order, so they are dropped, and the next list is
    /// asked of the server. A change that cannot be stored is logged and changes nothing.
    virtual void updateSortfield(const SortField& sortField, const std::string& cvId,
                                 const std::string& moduleName) = 0;
};

class GetCustomViewsDataManager final : public GetCustomViewsDataManagerProtocol {
public:
    /// The map and the settings may be null; the work on them is then skipped. With an adapter a change of several
    /// tables is one commit.
    explicit GetCustomViewsDataManager(std::shared_ptr<CustomViewPersistanceDelegate> customViewsPersistance,
                                       std::shared_ptr<FilterRecordMapPersistanceDelegate> cvRecordMapPersistance,
                                       std::shared_ptr<UserDefaultsUtil> userDefaultsUtil,
                                       std::shared_ptr<DatabaseAdapter> databaseAdapter = nullptr);
    /// Uses the database that is open at this moment and the settings of the account.
    static std::shared_ptr<GetCustomViewsDataManager> current();

    std::optional<CustomViews> getCustomViews(const std::string& moduleName) override;
    std::optional<CustomViews> getCustomViews(const std::string& moduleName,
                                              const std::vector<CustomViewColumnName>& sortBy) override;
    std::optional<CustomView> getCustomView(const std::string& id, const std::string& moduleName) override;
    std::optional<CustomView> getDefaultCustomView(const std::string& moduleName) override;
    std::optional<CustomView> getAllViewCustomView(const std::string& moduleName) override;
    void setAsDefaultCustomView(const std::string& cvId, const std::string& moduleName) override;
    void updateSortfield(const SortField& sortField, const std::string& cvId, const std::string& moduleName) override;

    const std::shared_ptr<CustomViewPersistanceDelegate> customViewsPersistance;
    const std::shared_ptr<FilterRecordMapPersistanceDelegate> cvRecordMapPersistance;
    const std::shared_ptr<UserDefaultsUtil> userDefaultsUtil;
    const std::shared_ptr<DatabaseAdapter> databaseAdapter;

private:
    bool changeOrder(const SortField& sortField, const std::string& cvId, const std::string& moduleName);
    void recordChange(const std::string& moduleName);
};

}  // namespace tarvo
