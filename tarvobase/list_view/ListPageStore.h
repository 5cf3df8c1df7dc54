#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tarvobase/list_view/OnlineViews.h"
#include "tarvobase/records/FilterRecordMapPersistanceDelegate.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"
#include "tarvobase/utils/UserDefaultsUtil.h"
#include "tarvobase/value_objects/view/CustomViewPersistanceDelegate.h"

namespace tarvo {

struct ListPage;

/// Stores the server's pages of views. A page is one commit: its records with their dependent rows, and the view's map.
/// The view's position follows the commit. Blocks its caller; may be called from any thread.
class ListPageStore {
public:
    enum class Outcome {
        stored,    ///< the page continues the list
        outdated,  ///< the list was emptied or reordered since the request, so only the records were stored
        failed     ///< nothing was stored
    };

    std::string account;  ///< whose views these are
    std::shared_ptr<RecordPersistanceDelegate> records;
    std::shared_ptr<FilterRecordMapPersistanceDelegate> map;
    std::shared_ptr<CustomViewPersistanceDelegate> views;
    std::shared_ptr<UserDefaultsUtil> userDefaults;

    /// `view` is the view as it was when the request was sent, and `from` is the number of records that the request
    /// named as held. `lastAdded` is the last record that was added here and accepted when the request was made: an
    /// answer that begins the list decides on all of them.
    Outcome store(const ListPage& page, const CustomView& view, std::int64_t from, std::int64_t lastAdded) const;

private:
    bool continuesList(const CustomView& view, std::int64_t from) const;
    void storePosition(const ListPage& page, const CustomView& view) const;
};

}  // namespace tarvo
