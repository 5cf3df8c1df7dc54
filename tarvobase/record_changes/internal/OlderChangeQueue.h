#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/record_changes/internal/ChangeDrain.h"
#include "tarvobase/record_changes/internal/ChangeSender.h"
#include "tarvobase/record_changes/internal/ChangeSettlement.h"
#include "tarvobase/record_changes/internal/ChangeTurns.h"

namespace tarvo {

/// The older queue as the drain of its database sees it. It keeps the rows in memory between two reads of the table,
/// since a queue may hold thousands; what it claims it reads once more, in the transaction that claims it.
class OlderChangeQueue final : public DrainedChanges {
public:
    OlderChangeQueue(const Stores& stores, std::shared_ptr<ChangeSender> sender, ChangeSettlement settlement);

    bool reclaim() override;
    void refresh() override { isKnown_ = false; }
    Next claimNext() override;
    void send(const std::string& transactionID, std::function<void(Settle)> answered) override;

private:
    struct Claim {
        Transaction change;
        ChangeEntry entry;
    };
    enum class Step { next, claimed, stale, failed };
    bool read();
    Step take(QueuedChange& change, const ChangeTurns::Judgement& judgement);
    Step claim(QueuedChange& change);
    Step failForDependency(const QueuedChange& change);
    Step drop(const QueuedChange& change);
    Outcome settle(const std::string& transactionID, const ChangeAnswer& answer);

    const Stores stores_;
    const std::shared_ptr<ChangeSender> sender_;
    const ChangeSettlement settlement_;
    std::vector<QueuedChange> queue_;  // in order, as of the last read
    ChangeTurns::Creations created_;
    bool isKnown_ = false;
    std::map<std::string, Claim> claims_;  // by id, from the claim to the answer
};

}  // namespace tarvo
