#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/Data.h"
#include "platform/Describe.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/value_objects/transaction/ChangeRegister.h"
#include "tarvobase/value_objects/transaction/ErrorResponse.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

namespace tarvo {

/// A change that the server does not have yet, as a screen of pending changes shows it.
struct Change {
    enum class State {
        ready,    ///< goes at the next opportunity
        sending,  ///< a request is on its way
        waiting,  ///< for other changes; see `waitingFor`
        failed    ///< refused; see `error`
    };
    enum class Reason {
        earlierChange,  ///< of the same record
        newRecord,      ///< it names a record whose add is not accepted yet
        notSendable     ///< changes of this kind are not sent yet
    };
    struct WaitingFor {
        Reason reason = Reason::earlierChange;
        std::vector<std::int64_t> numbers;  ///< the changes that must go first
        static constexpr auto fields() {
            return describe(field("reason", &WaitingFor::reason), field("numbers", &WaitingFor::numbers));
        }
    };

    std::int64_t number = 0;
    ChangeQueue queue = ChangeQueue::older;
    std::string transactionId;
    TransactionType kind = TransactionType::addRecord;
    std::string moduleName;
    std::string recordId;
    State state = State::ready;
    std::optional<WaitingFor> waitingFor;
    std::int64_t enteredAt = 0;  ///< milliseconds since 1970
    std::int64_t attempts = 0;   ///< requests that were started
    std::optional<ErrorResponse> error;

    static constexpr auto fields() {
        return describe(field("number", &Change::number), field("queue", &Change::queue),
                        field("transactionId", &Change::transactionId), field("kind", &Change::kind),
                        field("moduleName", &Change::moduleName), field("recordId", &Change::recordId),
                        field("state", &Change::state), field("waitingFor", &Change::waitingFor),
                        field("enteredAt", &Change::enteredAt), field("attempts", &Change::attempts),
                        field("error", &Change::error));
    }
};

template <>
struct EnumCases<Change::State> {
    using S = Change::State;
    static constexpr EnumCase<S> cases[] = {
        {S::ready, "ready"}, {S::sending, "sending"}, {S::waiting, "waiting"}, {S::failed, "failed"}};
};

template <>
struct EnumCases<Change::Reason> {
    using R = Change::Reason;
    static constexpr EnumCase<R> cases[] = {
        {R::earlierChange, "earlierChange"}, {R::newRecord, "newRecord"}, {R::notSendable, "notSendable"}};
};

/// The user's view of the changes that wait, and their hand on them. Each call blocks its caller; any thread may use
/// it.
class QueuedChanges {
public:
    struct Content {
        platform::Data uriData;              ///< the parameters of the request, as JSON
        std::optional<platform::Data> body;  ///< its body
    };
    using Numbers = std::vector<std::int64_t>;

    explicit QueuedChanges(const Stores& stores) : stores_(stores) {}

    /// Returns the changes of the organisation in the order of the queue, or nullopt if it cannot be read. Rows that
    /// cannot be read are left out.
    std::optional<std::vector<Change>> list() const;
    /// Returns what a change sends, or nullopt if there is no change of this number.
    std::optional<Content> content(std::int64_t number) const;
    /// Makes failed changes ready again: those of these numbers, or all. Changes that failed for the sake of one of
    /// them become ready with it. An edit leaves out what later edits of its record set; if nothing is left of it, it
    /// goes. Returns the numbers of the changes that are ready now, or nullopt if nothing could be stored. Wake the
    /// queue afterwards.
    std::optional<Numbers> retry(const Numbers& numbers) const;

private:
    bool retryOne(const Transaction& change, const Change& listed) const;

    const Stores stores_;
};

}  // namespace tarvo
