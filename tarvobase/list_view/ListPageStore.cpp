#include "tarvobase/list_view/ListPageStore.h"

#include "platform/Log.h"
#include "tarvobase/list_view/ListChanges.h"
#include "tarvobase/list_view/wire/ListPage.h"

namespace tarvo {

ListPageStore::Outcome ListPageStore::store(const ListPage& page, const CustomView& view, std::int64_t from,
                                            std::int64_t lastAdded) const {
    platform::MutexLock lock(ListChanges::shared().mutex);
    // Only an answer that begins the list can stand for all of it.
    bool replaces = from == 0 && OnlineViews::shared().awaitsReplacement(account, view);
    bool isCurrent = false;
    auto stored = records->storePage(page.records, view.moduleName, [&](const std::vector<std::string>& ids) {
        isCurrent = continuesList(view, from);
        if (!isCurrent) return true;
        if (replaces && !map->delete_(view.viewID, view.moduleName)) return false;
        return map->store(ids, view.viewID, view.moduleName);
    });
    if (!stored) return Outcome::failed;
    platform::log(
        platform::LogLevel::progress, "list view",
        "Network call success for " + view.viewName + ", with count of records " + std::to_string(stored->size()));
    if (!isCurrent) return Outcome::outdated;
    if (replaces) OnlineViews::shared().addAnswer(account, view);
    storePosition(page, view);
    // A later page cannot hold a record that belongs before it.
    if (from == 0 && lastAdded > userDefaults->getListFilterLastAddedRecord(view.moduleName, view.viewID))
        userDefaults->setListFilterLastAddedRecord(lastAdded, view.moduleName, view.viewID);
    return Outcome::stored;
}

/// Returns whether the records of an answer follow those of the map. A map with fewer rows than the request named, or
/// with another order, would have a gap that no later request fills.
bool ListPageStore::continuesList(const CustomView& view, std::int64_t from) const {
    auto stored = views->getCustomView(view.viewID, view.moduleName);
    if (!stored || stored->sortBy != view.sortBy || stored->sortOrder != view.sortOrder) return false;
    return from == 0 || map->count(view.viewID, view.moduleName).value_or(0) >= from;
}

void ListPageStore::storePosition(const ListPage& page, const CustomView& view) const {
    auto& info = page.info;
    // An answer without `hasMore` leaves the flag as it is, unless the answer says that there is no data.
    if (info.hasMore || info.noData == true)
        userDefaults->setListFilterHasMoreRecord(info.hasMore.value_or(false), view.moduleName, view.viewID);
    auto time = info.serverTime.value_or(static_cast<std::int64_t>(page.responseInfo.serverTime));
    if (time > 0) userDefaults->setListFilterRecordSyncTime(time, view.moduleName, view.viewID);
}

}  // namespace tarvo
