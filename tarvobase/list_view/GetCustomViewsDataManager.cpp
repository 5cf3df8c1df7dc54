#include "tarvobase/list_view/GetCustomViewsDataManager.h"

#include "platform/Clock.h"
#include "platform/Log.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/list_view/ListChanges.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/CVObserver.h"
#include "tarvobase/records/sql/CVRecordMapInDatabase.h"

namespace tarvo {

namespace {

void notifyObservers(const std::string& moduleName) {
    BrenNotificationCenter::shared().notify<CVObserver>(
        false, [moduleName](CVObserver& observer) { observer.customViewsChanged(moduleName); });
}

}  // namespace

GetCustomViewsDataManager::GetCustomViewsDataManager(
    std::shared_ptr<CustomViewPersistanceDelegate> customViewsPersistance,
    std::shared_ptr<FilterRecordMapPersistanceDelegate> cvRecordMapPersistance,
    std::shared_ptr<UserDefaultsUtil> userDefaultsUtil, std::shared_ptr<DatabaseAdapter> databaseAdapter)
    : customViewsPersistance(std::move(customViewsPersistance)),
      cvRecordMapPersistance(std::move(cvRecordMapPersistance)),
      userDefaultsUtil(std::move(userDefaultsUtil)),
      databaseAdapter(std::move(databaseAdapter)) {}

std::shared_ptr<GetCustomViewsDataManager> GetCustomViewsDataManager::current() {
    auto stores = Stores::current();
    return std::make_shared<GetCustomViewsDataManager>(
        stores.customViews(), std::make_shared<CVRecordMapInDatabase>(stores.databaseAdapter()),
        std::make_shared<UserDefaultsUtil>(stores.userDefaults), stores.databaseAdapter());
}

std::optional<GetCustomViewsDataManager::CustomViews> GetCustomViewsDataManager::getCustomViews(
    const std::string& moduleName) {
    return customViewsPersistance->getCustomViews(moduleName);
}
std::optional<GetCustomViewsDataManager::CustomViews> GetCustomViewsDataManager::getCustomViews(
    const std::string& moduleName, const std::vector<CustomViewColumnName>& sortBy) {
    return customViewsPersistance->getCustomViews(moduleName, sortBy);
}
std::optional<CustomView> GetCustomViewsDataManager::getCustomView(const std::string& id,
                                                                   const std::string& moduleName) {
    return customViewsPersistance->getCustomView(id, moduleName);
}
std::optional<CustomView> GetCustomViewsDataManager::getDefaultCustomView(const std::string& moduleName) {
    if (auto view = customViewsPersistance->getDefaultCustomView(moduleName)) return view;
    auto views = customViewsPersistance->getCustomViews(moduleName);
    if (!views || views->empty()) return std::nullopt;
    return std::move(views->front());
}
std::optional<CustomView> GetCustomViewsDataManager::getAllViewCustomView(const std::string& moduleName) {
    return customViewsPersistance->getAllViewCustomView(moduleName);
}

void GetCustomViewsDataManager::setAsDefaultCustomView(const std::string& cvId, const std::string& moduleName) {
    if (!customViewsPersistance->setAsDefaultCustomView(cvId, moduleName)) return;
    recordChange(moduleName);
    notifyObservers(moduleName);
}

void GetCustomViewsDataManager::updateSortfield(const SortField& sortField, const std::string& cvId,
                                                const std::string& moduleName) {
    recordChange(moduleName);
    if (changeOrder(sortField, cvId, moduleName)) return notifyObservers(moduleName);
    platform::log(platform::LogLevel::warning, "list view", "the order of view " + cvId + " could not be stored");
}

/// Stores the order and drops the map that follows the old one, both or neither. Returns whether they were stored.
bool GetCustomViewsDataManager::changeOrder(const SortField& sortField, const std::string& cvId,
                                            const std::string& moduleName) {
    platform::MutexLock lock(ListChanges::shared().mutex);
    // The flag comes first: a process that ends in between must not leave an empty list that says "no more".
    if (userDefaultsUtil) userDefaultsUtil->setListFilterHasMoreRecord(true, moduleName, cvId);
    auto change = [&] {
        return customViewsPersistance->updateSortfield(sortField, cvId, moduleName) &&
               (!cvRecordMapPersistance || cvRecordMapPersistance->delete_(cvId, moduleName));
    };
    return databaseAdapter ? databaseAdapter->transaction("order of a view", change) : change();
}

void GetCustomViewsDataManager::recordChange(const std::string& moduleName) {
    if (userDefaultsUtil)
        userDefaultsUtil->setListFilterLastUpdatedTime(platform::Clock::secondsSince1970(), {moduleName});
}

}  // namespace tarvo
