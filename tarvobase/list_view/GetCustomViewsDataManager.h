#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/records/sql/FilterRecordMapPersistanceDelegate.h"
#include "tarvobase/utils/UserDefaultsUtil.h"
#include "tarvobase/value_objects/view/CustomViewPersistanceDelegate.h"

namespace tarvo {

/// Views of the local database, and what follows from a change of one. From any thread; the observers of `CVObserver`
/// hear of a change on the bus's background queue.
class GetCustomViewsDataManagerProtocol : public virtual platform::Object {
public:
    using CustomViews = CustomViewPersistanceDelegate::CustomViews;

    /// Absent when the database does not answer.
    virtual std::optional<CustomViews> getCustomViews(const std::string& moduleName) = 0;
    virtual std::optional<CustomViews> getCustomViews(const std::string& moduleName,
                                                      const std::vector<CustomViewColumnName>& sortBy) = 0;
    virtual std::optional<CustomView> getCustomView(const std::string& id, const std::string& moduleName) = 0;
    /// The view that is marked as default, or the first stored one; absent when the module has no views.
    virtual std::optional<CustomView> getDefaultCustomView(const std::string& moduleName) = 0;
    virtual std::optional<CustomView> getAllViewCustomView(const std::string& moduleName) = 0;
    virtual void setAsDefaultCustomView(const std::string& cvId, const std::string& moduleName) = 0;
    /// The order of the view's stored ids no longer holds then: they are forgotten, and the next list is asked of the
    /// server.
    virtual void updateSortfield(const SortField& sortField, const std::string& cvId,
                                 const std::string& moduleName) = 0;
};

class GetCustomViewsDataManager final : public GetCustomViewsDataManagerProtocol {
public:
    /// Without the map or the settings, what concerns them is left out.
    explicit GetCustomViewsDataManager(std::shared_ptr<CustomViewPersistanceDelegate> customViewsPersistance,
                                       std::shared_ptr<FilterRecordMapPersistanceDelegate> cvRecordMapPersistance,
                                       std::shared_ptr<UserDefaultsUtil> userDefaultsUtil);
    /// Over the database that is open at this moment and the settings of the account.
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

private:
    void noteChange(const std::string& moduleName);
};

}  // namespace tarvo
