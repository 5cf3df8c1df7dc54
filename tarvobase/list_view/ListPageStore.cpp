#include "tarvobase/list_view/ListPageStore.h"

#include "platform/Log.h"
#include "tarvobase/list_view/ListChanges.h"
#include "tarvobase/list_view/wire/ListPage.h"

namespace tarvo {

namespace {

/// The time of a list whose own time is not known. Asked for what changed since then, the server sends all of it.
constexpr std::int64_t earliestTime = 1;

}  // namespace

ListPageStore::Outcome ListPageStore::store(const ListPage& page, const CustomView& view, const Asked& asked) const {
    platform::MutexLock lock(ListChanges::shared().mutex);
    bool isCurrent = false;
    auto stored = records->storePage(page.records, view.moduleName, [&](const std::vector<std::string>& ids) {
        isCurrent = continuesList(view, asked);
        if (!isCurrent) return true;
        if (asked.from == 0 && !map->delete_(view.viewID, view.moduleName)) return false;
        return map->store(ids, view.viewID, view.moduleName);
    });
    if (!stored) return Outcome::failed;
    platform::log(
        platform::LogLevel::progress, "list view",
        "Network call success for " + view.viewName + ", with count of records " + std::to_string(stored->size()));
    if (!isCurrent) return Outcome::outdated;
    if (asked.from == 0) OnlineViews::shared().addAnswer(account, view);
    storePosition(page, view, asked);
    return Outcome::stored;
}

/// Returns whether the records of an answer follow those of the map. A map with fewer rows than the request named, or
/// with another order, would have a gap that no later request fills. A page that was on its way while a sync changed
/// the list may hold records that the sync has taken out.
bool ListPageStore::continuesList(const CustomView& view, const Asked& asked) const {
    auto stored = views->getCustomView(view.viewID, view.moduleName);
    if (!stored || !stored->hasSameList(view)) return false;
    if (userDefaults->getListFilterRecordSyncTime(view.moduleName, view.viewID) != asked.syncTime) return false;
    return asked.from == 0 || map->count(view.viewID, view.moduleName).value_or(0) >= asked.from;
}

void ListPageStore::storePosition(const ListPage& page, const CustomView& view, const Asked& asked) const {
    auto& info = page.info;
    // An answer without `hasMore` leaves the flag as it is, unless the answer says that there is no data.
    if (info.hasMore || info.noData == true)
        userDefaults->setListFilterHasMoreRecord(info.hasMore.value_or(false), view.moduleName, view.viewID);
    // A later page cannot hold a record that belongs before it.
    if (asked.from == 0 && asked.lastAdded > userDefaults->getListFilterLastAddedRecord(view.moduleName, view.viewID))
        userDefaults->setListFilterLastAddedRecord(asked.lastAdded, view.moduleName, view.viewID);
    storeTime(page, view, asked);
}

/// The time of a list is that of its first page: what changes between two pages would never be asked for again from a
/// later time.
void ListPageStore::storeTime(const ListPage& page, const CustomView& view, const Asked& asked) const {
    userDefaults->setListFilterHasLaterPages(asked.from > 0, view.moduleName, view.viewID);
    auto time = page.info.serverTime.value_or(static_cast<std::int64_t>(page.responseInfo.serverTime));
    if (asked.from > 0) time = asked.syncTime ? 0 : earliestTime;
    if (time > 0) userDefaults->setListFilterRecordSyncTime(time, view.moduleName, view.viewID);
}

}  // namespace tarvo
