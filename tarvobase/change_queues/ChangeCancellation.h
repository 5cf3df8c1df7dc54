#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/Describe.h"
#include "platform/Result.h"
#include "tarvobase/change_queues/RecordReversion.h"
#include "tarvobase/change_queues/SelectedChange.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"
#include "tarvobase/transaction/TransactionManagerContract.h"

namespace tarvo {

struct CancelRequest {
    std::vector<std::int64_t> numbers;
    /// Gives the records the values that they had before the changes. The record of a cancelled add goes in any case.
    bool revert = false;
    /// Cancels what hangs on a cancelled add as well: the changes that name its record, and what hangs on those.
    bool withWaiters = false;

    static constexpr auto fields() {
        return describe(field("numbers", &CancelRequest::numbers), optionalField("revert", &CancelRequest::revert),
                        optionalField("withWaiters", &CancelRequest::withWaiters));
    }
};

/// Why nothing was cancelled.
struct CancelRefusal {
    enum class Reason {
        notQueued,   ///< there are no such changes in the queues
        sent,        ///< they are on their way, or the server may have them: only its answer can end them
        hasWaiters,  ///< they hang on the changes that were to be cancelled
        neverSent,   ///< deletes that took unsent adds with them: the records cannot be brought back
        notStored    ///< the database refuses
    };
    Reason reason = Reason::notStored;
    std::vector<std::int64_t> numbers{};

    /// Returns the refusal as a sentence for people.
    std::string message() const;
};

/// Takes changes out of both queues, in one transaction. Blocks its caller; any thread may use it.
class ChangeCancellation {
public:
    using Numbers = std::vector<std::int64_t>;
    struct Parts {
        Stores stores;
        std::shared_ptr<RecordPersistanceDelegate> records;
        std::shared_ptr<TransactionManagerContract> manager;
        /// Fetches a record as the server has it. Called after the commit.
        std::function<void(const std::string& moduleName, const std::string& recordId)> fetch;
        /// Removes the sound of a note. Called after the commit.
        std::function<void(const std::string& recordId)> removeSound;
        /// Lets changes go that waited for the cancelled ones. Called after the commit.
        std::function<void()> wake;
    };

    explicit ChangeCancellation(Parts parts) : parts_(std::move(parts)) {}

    /// Cancels the changes, all or none, and returns their numbers with those of the waiters that went with them, in
    /// the order of the numbers. Observers are notified of each by `changeCancelled`.
    Result<Numbers, CancelRefusal> cancel(const CancelRequest& request) const;

private:
    using Changes = std::vector<SelectedChange>;
    using Refusal = std::optional<CancelRefusal>;
    struct Waiters;

    Refusal select(const Numbers& numbers, Changes& selected) const;
    bool addWaiters(Changes& selected) const;
    std::optional<Numbers> deletesOfUnsentAdds(const Changes& selected) const;
    bool addWaitersOf(const SelectedChange& creation, Waiters& waiters, Changes& selected) const;
    bool readOlder(Waiters& waiters) const;
    bool add(ChangeQueue queue, const std::string& transactionId, Waiters& waiters, Changes& selected) const;
    bool take(const Changes& changes) const;
    bool failOtherWaiters(const Changes& changes) const;
    bool revert(const Changes& changes, bool revert) const;

    const Parts parts_;
};

}  // namespace tarvo
