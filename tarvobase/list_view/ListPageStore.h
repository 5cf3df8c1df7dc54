#pragma once

#include <cstdint>
#include <memory>
#include <optional>
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
        outdated,  ///< the list is another one than at the request, so only the records were stored
        failed     ///< nothing was stored
    };
    /// What a request asked for, and the state of the list when it was made.
    struct Asked {
        std::int64_t from = 0;  ///< the number of records that the request named as held
        /// The last record that was added here and accepted. An answer that begins the list decides on all of them.
        std::int64_t lastAdded = 0;
        std::optional<std::int64_t> syncTime{};  ///< the time of the list
    };

    std::string account;  ///< whose views these are
    std::shared_ptr<RecordPersistanceDelegate> records;
    std::shared_ptr<FilterRecordMapPersistanceDelegate> map;
    std::shared_ptr<CustomViewPersistanceDelegate> views;
    std::shared_ptr<UserDefaultsUtil> userDefaults;

    /// `view` is the view as it was when the request was sent. An answer that begins the list takes the place of what
    /// is stored of it.
    Outcome store(const ListPage& page, const CustomView& view, const Asked& asked) const;

private:
    bool continuesList(const CustomView& view, const Asked& asked) const;
    void storePosition(const ListPage& page, const CustomView& view, const Asked& asked) const;
    void storeTime(const ListPage& page, const CustomView& view, const Asked& asked) const;
};

}  // namespace tarvo
