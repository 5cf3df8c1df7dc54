#include "tarvobase/list_sync/ListChangesStore.h"

#include <algorithm>
#include <set>

#include "platform/Log.h"
#include "tarvobase/list_sync/wire/SyncLFRecordParser.h"
#include "tarvobase/list_view/ListChanges.h"
#include "tarvobase/records/sql/DeletedRecords.h"

namespace tarvo {

namespace {

const std::vector<std::string>& orNone(const std::optional<std::vector<std::string>>& ids) {
    static const std::vector<std::string> none;
    return ids ? *ids : none;
}

std::vector<std::string> joined(std::vector<std::string> a, const std::vector<std::string>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

std::vector<std::string> idsOf(const std::optional<WireRecords>& records) {
    return records ? idsOf(*records) : std::vector<std::string>();
}

}  // namespace

ListChangesStore::Outcome ListChangesStore::store(const SyncLFRecordParsedResult& changes, const Asked& asked) const {
    platform::MutexLock lock(ListChanges::shared().mutex);
    if (!databaseAdapter || !isCurrent(asked)) return Outcome::outdated;
    auto& module = asked.moduleInfo.moduleName();
    bool resets = mustReset(changes, asked);
    // The flag comes first: a process that ends in between must not leave an empty list that says "no more".
    if (resets) userDefaults->setListFilterHasMoreRecord(true, module, asked.positionId);
    if (!databaseAdapter->transaction("sync of a list", [&] { return storeAll(changes, asked, resets); }))
        return Outcome::failed;
    if (resets) return Outcome::reset;
    storePosition(changes, asked);
    return Outcome::stored;
}

/// Returns whether the list is still the one for which the changes were asked. A page or a sync that came meanwhile has
/// given it another time.
bool ListChangesStore::isCurrent(const Asked& asked) const {
    auto& module = asked.moduleInfo.moduleName();
    auto view = views->getCustomView(asked.view.viewID, module);
    return view && view->hasSameList(asked.view) &&
           userDefaults->getListFilterRecordSyncTime(module, asked.positionId) == asked.syncTime;
}

/// Too many changes for one answer are as good as none: this call has no second page. If pages of the list were read at
/// different times, a record that left an earlier page or moved on has shifted a later one by one place, which no
/// change shows.
bool ListChangesStore::mustReset(const SyncLFRecordParsedResult& changes, const Asked& asked) const {
    if (changes.info.resetLocal == true || changes.info.hasMore == true) return true;
    bool mayShift = recordCount(changes.modifiedRecordList) > 0 || !orNone(changes.deletedRecords).empty() ||
                    !orNone(changes.movedRecords).empty();
    return mayShift && userDefaults->getListFilterHasLaterPages(asked.moduleInfo.moduleName(), asked.positionId);
}

/// The order of the list is asked from the server's values, before the changes that wait to be sent are laid over them.
bool ListChangesStore::storeAll(const SyncLFRecordParsedResult& changes, const Asked& asked, bool resets) const {
    auto& module = asked.moduleInfo.moduleName();
    auto& viewId = asked.view.viewID;
    if (resets && !map->delete_(viewId, module)) return false;
    bool hasMore = userDefaults->getListFilterHasMoreRecord(module, asked.positionId);
    Ids absent;
    if (hasMore && !resets)
        absent = absentAmong(joined(idsOf(changes.addedRecordList), idsOf(changes.modifiedRecordList)), module);
    auto storeModified = [&](const Ids& added) {
        auto listBoth = [&](const Ids& modified) { return resets || list(joined(added, modified), absent, asked); };
        if (!changes.modifiedRecordList) return listBoth({});
        return records->storePage(*changes.modifiedRecordList, module, listBoth).has_value();
    };
    bool isStored = changes.addedRecordList
                        ? records->storePage(*changes.addedRecordList, module, storeModified).has_value()
                        : storeModified({});
    if (!isStored) return false;
    auto& deleted = orNone(changes.deletedRecords);
    if (!deleted.empty() && !removeDeletedRecords(databaseAdapter, *records, module, deleted)) return false;
    auto& moved = orNone(changes.movedRecords);
    return moved.empty() || map->delete_(viewId, moved, module);
}

/// Puts changed records into the map, as far as the stored part of the list reaches.
bool ListChangesStore::list(const Ids& changed, const Ids& absentBefore, const Asked& asked) const {
    auto& module = asked.moduleInfo.moduleName();
    auto& viewId = asked.view.viewID;
    if (changed.empty()) return true;
    if (!map->store(changed, viewId, module)) return false;
    if (!userDefaults->getListFilterHasMoreRecord(module, asked.positionId)) return true;
    auto beyond = lists->getIdsAtEnd(asked.view, asked.moduleInfo, {changed.begin(), changed.end()});
    if (!beyond) return false;
    if (beyond->empty()) return true;
    platform::log(platform::LogLevel::progress, "list sync",
                  "Sync for cv: " + asked.view.viewName + " is partially saved till " +
                      std::to_string(changed.size() - beyond->size()));
    if (!map->delete_(viewId, *beyond, module)) return false;
    // Records that were not here stay away; the pages of the list bring them.
    std::set<std::string> absent(absentBefore.begin(), absentBefore.end());
    std::erase_if(*beyond, [&](auto& id) { return !absent.contains(id); });
    return beyond->empty() || records->deleteRecords(*beyond, module);
}

ListChangesStore::Ids ListChangesStore::absentAmong(const Ids& ids, const std::string& moduleName) const {
    std::set<std::string> absent(ids.begin(), ids.end());
    if (auto present = records->presentIds(ids, moduleName))
        for (auto& id : *present) absent.erase(id);
    return {absent.begin(), absent.end()};
}

void ListChangesStore::storePosition(const SyncLFRecordParsedResult& changes, const Asked& asked) const {
    auto& module = asked.moduleInfo.moduleName();
    auto& id = asked.positionId;
    if (asked.lastAdded > userDefaults->getListFilterLastAddedRecord(module, id))
        userDefaults->setListFilterLastAddedRecord(asked.lastAdded, module, id);
    auto time = changes.time();
    if (!time) return;
    userDefaults->setListFilterRecordSyncTime(*time, module, id);
    userDefaults->setListFilterHasLaterPages(false, module, id);
}

}  // namespace tarvo
