#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/record_changes/internal/QueuedChange.h"

namespace tarvo {

/// Judges the rows of the older queue, one after the other in their order: which of them may be sent now, and what the
/// others wait for. Changes of one record go in their order, and no request names a record that the server does not
/// know yet. It refers to the rows, which must outlive it and stay as they are.
class ChangeTurns {
public:
    enum class Turn {
        send,         ///< nothing stands in its way
        wait,         ///< what it waits for is still to be sent, or on its way
        fail,         ///< it names a record whose add has failed or is gone
        drop,         ///< the delete of a record that the server never had
        notSendable,  ///< a ready row of a kind that is not sent yet; it holds up nothing
        notReady      ///< being sent, or failed
    };
    struct Judgement {
        Turn turn = Turn::notReady;
        std::vector<std::string> waitsFor;  ///< ids of transactions, for `wait`
    };

    /// A transaction of the current queue that creates a record.
    struct Creation {
        std::string transactionId;
        bool hasFailed = false;
        friend bool operator==(const Creation&, const Creation&) = default;
    };
    /// What rows of the older queue may have to wait for in the current one.
    struct CurrentQueue {
        std::map<std::string, Creation, std::less<>> creations;  ///< by the record's temporary id
        /// By row, the transactions that change its record and come before it.
        std::multimap<std::string, std::string, std::less<>> earlier;
        friend bool operator==(const CurrentQueue&, const CurrentQueue&) = default;
    };

    /// Returns what concerns the rows, or nullopt if the queue cannot be read.
    static std::optional<CurrentQueue> currentQueueFor(const Stores& stores, const std::vector<QueuedChange>& queue);

    /// Refers to both, which must outlive it.
    ChangeTurns(const std::vector<QueuedChange>& queue, const CurrentQueue& current);

    /// Judges the next row. Rows are given in the order of the queue, none left out.
    Judgement judge(const QueuedChange& change);

    static bool isSendable(TransactionType type);

private:
    /// The row of the record's queued add, or null.
    const QueuedChange* addOf(const std::string& recordId) const;
    Judgement judgeReady(const QueuedChange& change) const;

    const CurrentQueue& current_;
    std::map<std::string, const QueuedChange*, std::less<>> adds_;
    std::map<std::string, std::string, std::less<>> holders_;  // the last row in the way of a record's later ones
};

}  // namespace tarvo
