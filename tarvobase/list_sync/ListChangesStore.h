#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/list_view/GetFilterRecordsDBSP.h"
#include "tarvobase/metadata/ModuleInfo.h"
#include "tarvobase/records/FilterRecordMapPersistanceDelegate.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"
#include "tarvobase/utils/UserDefaultsUtil.h"
#include "tarvobase/value_objects/view/CustomViewPersistanceDelegate.h"

namespace tarvo {

struct SyncLFRecordParsedResult;

/// Stores what changed in the list of a view. The changes are one commit: records with their dependent rows, and the
/// view's map. The list's position and time follow it.
///
/// The map always holds the beginning of the server's list, without gaps, since a page is asked for after as many
/// records as the map has. So a changed record stays in the map, or enters it, only if a record that has not changed
/// comes after it in the order of the list: what lies between two records of the map is known, and what lies after the
/// last of them is not. A list that is stored to its end takes every record. Blocks its caller; may be called from any
/// thread.
class ListChangesStore {
public:
    enum class Outcome {
        stored,
        reset,     ///< the list was emptied, so that its next page is its first one; the records were stored
        outdated,  ///< the list is another one than at the request, and nothing was stored
        failed     ///< nothing was stored
    };
    /// The list when the changes were asked for.
    struct Asked {
        const CustomView& view;
        const ModuleInfo& moduleInfo;
        std::string positionId;  ///< stands for the view in the settings
        std::int64_t syncTime = 0;
        std::int64_t lastAdded = 0;  ///< the last record that was added here and accepted
    };

    std::shared_ptr<DatabaseAdapter> databaseAdapter;
    std::shared_ptr<RecordPersistanceDelegate> records;
    std::shared_ptr<GetFilterRecordsDBSP> lists;
    std::shared_ptr<FilterRecordMapPersistanceDelegate> map;
    std::shared_ptr<CustomViewPersistanceDelegate> views;
    std::shared_ptr<UserDefaultsUtil> userDefaults;

    Outcome store(const SyncLFRecordParsedResult& changes, const Asked& asked) const;

private:
    using Ids = std::vector<std::string>;

    bool isCurrent(const Asked& asked) const;
    bool mustReset(const SyncLFRecordParsedResult& changes, const Asked& asked) const;
    bool storeAll(const SyncLFRecordParsedResult& changes, const Asked& asked, bool resets) const;
    bool list(const Ids& changed, const Ids& absentBefore, const Asked& asked) const;
    Ids absentAmong(const Ids& ids, const std::string& moduleName) const;
    void storePosition(const SyncLFRecordParsedResult& changes, const Asked& asked) const;
};

}  // namespace tarvo
