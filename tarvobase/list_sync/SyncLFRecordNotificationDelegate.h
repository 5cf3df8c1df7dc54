#pragma once

#include <string>

#include "platform/Object.h"
#include "tarvobase/list_sync/SyncLFRecordCompletionStatus.h"

namespace tarvo {

/// The topic for syncs of lists. Callbacks run on the main queue.
class SyncLFRecordNotificationDelegate : public virtual platform::Object {
public:
    /// A sync of the list of the view `criteriaId` has ended.
    virtual void listSynced(const std::string& moduleName, const std::string& criteriaId,
                            const SyncLFRecordCompletionStatus& status) {
        static_cast<void>(moduleName), static_cast<void>(criteriaId), static_cast<void>(status);
    }
};

}  // namespace tarvo
