#pragma once

#include <optional>
#include <string>

#include "platform/Object.h"
#include "tarvobase/transaction/Change.h"

namespace tarvo {

/// The topic for what becomes of changes. A change is acknowledged twice: when it is safe here, and when the server has
/// decided. Callbacks run on the main queue, after the commit that they report. Every operation is empty unless
/// overridden.
class ChangeQueueObserver : public virtual platform::Object {
public:
    /// The change is stored and queued, and survives the end of the process.
    virtual void changeSaved(const Change& change) { static_cast<void>(change); }
    /// Nothing of the change is stored.
    virtual void changeNotSaved(const std::string& moduleName, const std::string& recordId, ChangeNotSaved reason) {
        static_cast<void>(moduleName), static_cast<void>(recordId), static_cast<void>(reason);
    }
    /// The server has the change, or the delete of its record has made it needless; it has left the queue.
    /// `change.recordId` is the server's id; `formerRecordId` is the temporary one of a record that the server has
    /// added.
    virtual void changeAccepted(const Change& change, const std::optional<std::string>& formerRecordId) {
        static_cast<void>(change), static_cast<void>(formerRecordId);
    }
    /// The change was taken out of its queue. The server does not have it.
    virtual void changeCancelled(const Change& change) { static_cast<void>(change); }
    /// The change stays in the queue as failed, with the reason in its `error`.
    virtual void changeRefused(const Change& change) { static_cast<void>(change); }
};

}  // namespace tarvo
