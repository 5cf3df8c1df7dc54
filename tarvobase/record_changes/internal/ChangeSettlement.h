#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/record_changes/internal/RecordIdReplacement.h"
#include "tarvobase/record_changes/internal/RecordRefetch.h"
#include "tarvobase/record_changes/wire/ChangeAnswer.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"
#include "tarvobase/transaction/TransactionWaiters.h"
#include "tarvobase/value_objects/transaction/ChangeRegister.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

namespace tarvo {

/// A change that was sent, and what came back.
struct AnsweredChange {
    Transaction sent;
    ChangeEntry entry;
    ChangeAnswer answer;
};

/// Stores what came back for changes of the older queue: ids, values, queue and register in one transaction. Notices
/// and requests that follow from it come after its commit. Each call blocks its caller.
class ChangeSettlement {
public:
    /// Asks the server for what an answer did not bring. Called before the commit for the reason `acceptance`, and
    /// after it for the others.
    using Fetch =
        std::function<void(const std::string& moduleName, const std::string& recordId, RecordRefetch::Reason reason)>;

    /// Wakes the current queue, some of whose transactions may go now.
    using Wake = std::function<void()>;

    ChangeSettlement(const Stores& stores, std::shared_ptr<RecordPersistanceDelegate> records, Fetch fetch,
                     Wake wake = {});

    /// Stores all answers in one transaction, or none. Returns whether they are stored. A change without an answer is
    /// ready again then; otherwise each is to be sent again under its key.
    bool settle(const std::vector<AnsweredChange>& changes) const;
    /// Call it after another end of a change, for which transactions of the current queue may wait.
    void wakeCurrentQueue() const {
        if (wake_) wake_();
    }

private:
    bool readQueued(const std::vector<AnsweredChange>& changes, std::set<std::string>& queued) const;
    bool store(const std::vector<AnsweredChange>& changes) const;
    bool storeAccepted(const std::vector<const AnsweredChange*>& changes) const;
    bool storeRefused(const Transaction& sent, const ChangeEntry& entry, const ChangeAnswer& answer) const;
    bool replaceId(const Transaction& sent, const ChangeEntry& entry, const std::string& newId) const;
    bool storeServerRecords(const std::string& moduleName, const std::vector<ValueMap>& records) const;
    bool tidyRest(const std::vector<const AnsweredChange*>& changes) const;
    bool tidyRest(const AnsweredChange& change, const std::string& recordId) const;
    void notify(const Transaction& sent, const ChangeEntry& entry, const ChangeAnswer& answer) const;
    bool goesOn(const std::string& recordId) const;
    bool areOfCurrentQueue(const std::vector<AnsweredChange>& changes) const;
    bool leaveOutOfCurrent(const std::vector<AnsweredChange>& changes) const;
    void follow(const AnsweredChange& change) const;

    const Stores stores_;
    const std::shared_ptr<RecordPersistanceDelegate> records_;
    const RecordIdReplacement replacement_;
    const Fetch fetch_;
    const Wake wake_;
    const TransactionWaiters waiters_;
};

}  // namespace tarvo
