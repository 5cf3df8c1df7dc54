#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Describe.h"
#include "platform/Object.h"
#include "tarvobase/value_objects/transaction/ErrorResponse.h"

namespace tarvo {

/// The two queues of changes. The raw texts are stored, and hosts see them.
enum class ChangeQueue { older, current };

template <>
struct EnumCases<ChangeQueue> {
    static constexpr EnumCase<ChangeQueue> cases[] = {{ChangeQueue::older, "older"}, {ChangeQueue::current, "current"}};
};

/// What has become of a change. The raw texts are stored, and hosts see them.
enum class ChangeOutcome {
    queued,     ///< the server does not have it yet, or has refused it
    accepted,   ///< the server has it, or the delete of its record has made it needless
    merged,     ///< another change of its record has taken its place
    cancelled,  ///< it was taken out of its queue before the server had it
    unknown     ///< there was no such change, or it ended too long ago
};

template <>
struct EnumCases<ChangeOutcome> {
    using O = ChangeOutcome;
    static constexpr EnumCase<O> cases[] = {{O::queued, "queued"},
                                            {O::accepted, "accepted"},
                                            {O::merged, "merged"},
                                            {O::cancelled, "cancelled"},
                                            {O::unknown, "unknown"}};
};

/// A change that leaves its queue.
struct EndedChange {
    std::string transactionId;
    std::string moduleName;
    std::string recordId;  ///< the server's id if the end of the change has brought it
};

/// What the register remembers of a change that has left its queue.
struct ChangeEnd {
    std::int64_t number = 0;
    ChangeOutcome outcome = ChangeOutcome::unknown;
    std::string moduleName;
    std::string recordId;
    friend bool operator==(const ChangeEnd&, const ChangeEnd&) = default;
};

/// What the library knows of a change beside its row in a queue.
struct ChangeEntry {
    /// Rises with each change of either queue. No number is given twice, even after the change is gone.
    std::int64_t number = 0;
    std::int64_t enteredAt = 0;  ///< milliseconds since 1970
    std::string organisation;    ///< where the change was made; empty if none was chosen
    /// A UUID of the payload, which each send carries. The server applies a payload once, however often it arrives.
    std::string key;
    std::int64_t sends = 0;  ///< requests that were started
    /// How many of them the server is known not to have applied: it refused them, or they never reached it.
    std::int64_t refusedSends = 0;
    std::optional<ErrorResponse> lastRefusal;
    /// Whether the server may have applied the change all the same: its answer could not be read, or it failed a repeat
    /// as a whole, after a send without an answer.
    bool mayBeApplied = false;
    ChangeQueue queue = ChangeQueue::older;
    std::string transactionId;  ///< the row in its queue; the current queue's number in decimal
    /// The place of an add of the older queue among the transactions of the current one, which can wait for it. 0 for
    /// every other change.
    std::int64_t transactionNumber = 0;

    /// Returns whether the server has not applied the change: it said so, or was never asked.
    bool isKnownToBeRefused() const { return lastRefusal && !mayBeApplied; }

    /// Returns whether the server may have the change: a request is on its way, or had no answer that can be relied on.
    bool mayHaveArrived() const { return sends > refusedSends; }

    friend bool operator==(const ChangeEntry&, const ChangeEntry&) = default;
};

/// The register of the changes that wait in either queue, one entry per row of a queue. It is a table of the library's
/// own, written in the same commits as the queues. Writes return whether they were stored, and join the transaction of
/// the database around them. Reads return nullopt if the register cannot be read. Any thread may use it; each call
/// blocks its caller.
class ChangeRegister : public virtual platform::Object {
public:
    using Entries = std::optional<std::vector<ChangeEntry>>;

    /// Enters a change of the register's organisation with a new number and a new key. Returns the present entry if the
    /// change has one already, and nullopt if none could be stored.
    virtual std::optional<ChangeEntry> enter(ChangeQueue queue, const std::string& transactionId) = 0;
    /// Does the same for a change whose id is new, without looking for its entry.
    virtual std::optional<ChangeEntry> enterNew(ChangeQueue queue, const std::string& transactionId) = 0;
    /// Returns the entries of the register's organisation, in the order of their numbers.
    virtual Entries entries() = 0;
    /// Returns the entries that exist of these changes of a queue, in the order of their numbers.
    virtual Entries entriesOf(ChangeQueue queue, const std::vector<std::string>& transactionIds) = 0;
    /// Returns the entries of the register's organisation whose last refusal has this code.
    virtual Entries refusedWith(const std::string& code) = 0;
    /// Returns the entries of the register's organisation whose last send got no answer, of one queue.
    virtual Entries unanswered(ChangeQueue queue) = 0;
    /// Counts one more send of each of these changes.
    virtual bool noteSends(const std::vector<std::int64_t>& numbers) = 0;
    /// Takes back what `noteSends` counted for changes that were not sent after all.
    virtual bool takeBackSends(const std::vector<std::int64_t>& numbers) = 0;
    bool noteSend(std::int64_t number) { return noteSends({number}); }
    /// Notes that the last send of each of these changes has not reached the server.
    virtual bool noteUnsent(const std::vector<std::int64_t>& numbers) = 0;
    virtual bool noteRefusal(std::int64_t number, const ErrorResponse& refusal, bool mayBeApplied) = 0;
    /// Forgets the refusal of a change that is to be sent again as it is, under its key.
    virtual bool forgetRefusal(std::int64_t number) = 0;
    /// Gives a change with a new payload a new key, and forgets its refusal. Returns the key, or nullopt if it could
    /// not be stored. The server would answer the former key with the former result.
    virtual std::optional<std::string> renewKey(std::int64_t number) = 0;
    /// Gives the entry of a change to another one of its queue, which must not have an entry.
    virtual bool passOn(ChangeQueue queue, const std::string& transactionId, const std::string& newTransactionId) = 0;
    /// Gives an add of the older queue its place among the transactions of the current one.
    virtual bool setTransactionNumber(std::int64_t number, std::int64_t transactionNumber) = 0;
    /// Returns the places of all adds that are left, also of other organisations, or nullopt if the register cannot be
    /// read.
    virtual std::optional<std::vector<std::int64_t>> transactionNumbers() = 0;
    /// Returns the highest place that was given, 0 if there is none, or nullopt if the register cannot be read.
    virtual std::optional<std::int64_t> highestTransactionNumber() = 0;
    /// Takes changes of a queue out of the register and remembers what became of them, for the 1,000 changes that ended
    /// last.
    virtual bool end(ChangeQueue queue, const std::vector<EndedChange>& changes, ChangeOutcome outcome) = 0;
    /// Returns the entries with these numbers, in their order, whatever their organisation.
    virtual Entries entriesWithNumbers(const std::vector<std::int64_t>& numbers) = 0;
    /// Returns what is remembered of changes with these numbers, in their order, or nullopt if it cannot be
    /// read.
    virtual std::optional<std::vector<ChangeEnd>> endsOf(const std::vector<std::int64_t>& numbers) = 0;
};

}  // namespace tarvo
