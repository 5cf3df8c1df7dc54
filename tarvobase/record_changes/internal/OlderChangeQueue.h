#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ThreadSafety.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/record_changes/internal/ChangeDrain.h"
#include "tarvobase/record_changes/internal/ChangeSender.h"
#include "tarvobase/record_changes/internal/ChangeSettlement.h"
#include "tarvobase/record_changes/internal/ChangeTurns.h"

namespace tarvo {

/// The older queue as the drain of its database sees it. It keeps the rows in memory between two reads of the table,
/// since a queue may hold thousands; what it claims, fails or drops it reads once more, in the transaction that does
/// it.
class OlderChangeQueue final : public DrainedChanges {
public:
    OlderChangeQueue(const Stores& stores, std::shared_ptr<ChangeSender> sender, ChangeSettlement settlement);

    bool reclaim() override;
    void refresh() override { isKnown_ = false; }
    Claims claim(std::size_t most) override;
    void send(const std::string& transactionID, ChangeCompletion answered) override;
    Settlement settle(std::vector<Answer> answers) override;
    void giveBack(const std::vector<std::string>& transactionIDs) override;

private:
    struct Claim {
        Transaction change;
        ChangeEntry entry;
    };
    enum class Step { done, stale, failed };
    bool read();
    bool isAsRead() const;
    /// Collects what can go, and ends what never can.
    Step findSendable(std::size_t most, std::vector<QueuedChange*>& found);
    Step claim(const std::vector<QueuedChange*>& changes);
    Step failForDependency(const QueuedChange& change);
    Step drop(const QueuedChange& change);
    bool removeCreating(const std::vector<std::string>& transactionIds, const Transaction& deletion) const;
    bool isClaimed(const std::string& transactionID) const;
    std::optional<Claim> takeClaim(const std::string& transactionID);

    const Stores stores_;
    const std::shared_ptr<ChangeSender> sender_;
    const ChangeSettlement settlement_;
    std::vector<QueuedChange> queue_;  // in order, as of the last read
    ChangeTurns::CurrentQueue current_;
    bool isPrepared_ = false;
    bool isKnown_ = false;

    mutable platform::Mutex mutex_;
    std::map<std::string, Claim> claims_ TARVO_GUARDED_BY(mutex_);  // by id, from the claim to the answer
};

}  // namespace tarvo
