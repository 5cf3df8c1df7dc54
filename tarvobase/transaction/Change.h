#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/Describe.h"
#include "tarvobase/value_objects/transaction/ChangeRegister.h"
#include "tarvobase/value_objects/transaction/ErrorResponse.h"
#include "tarvobase/value_objects/transaction/NTransaction.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

namespace tarvo {

/// A change that the server does not have yet, as a screen of pending changes shows it.
struct Change {
    enum class State {
        ready,    ///< goes at the next opportunity
        sending,  ///< a request is on its way
        waiting,  ///< see `waitingFor`
        failed    ///< refused; see `error`
    };
    enum class Reason {
        earlierChange,  ///< of the same record
        newRecord,      ///< it names a record whose add is not accepted yet
        notSendable,    ///< changes of this kind are not sent yet
        noToken,        ///< nobody is signed in; the next try is at `until`
        server,         ///< the server has not answered since `since`; the next try is at `until`
        otherProcess,   ///< another program sends the changes of this database; the next look is at `until`
        queueOff,       ///< the queue was not started, or was stopped
        otherScope,     ///< it belongs to an account or organisation that is not in force
        heldBack        ///< for a newer change of the record, or a timer
    };
    struct WaitingFor {
        Reason reason = Reason::earlierChange;
        std::optional<std::int64_t> until, since;  ///< milliseconds since 1970
        std::vector<std::int64_t> numbers;         ///< the changes that must go first
        static constexpr auto fields() {
            return describe(field("reason", &WaitingFor::reason), field("until", &WaitingFor::until),
                            field("since", &WaitingFor::since), field("numbers", &WaitingFor::numbers));
        }
    };

    std::int64_t number = 0;
    ChangeQueue queue = ChangeQueue::older;
    std::string transactionId;
    std::string kind;  ///< the name of its case in `TransactionType` or `NTransaction::Kind`
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

    /// Makes the change of a row of the older queue and its entry in the register.
    static Change of(const Transaction& row, const ChangeEntry& entry);
    /// Makes the change of a transaction of the current queue.
    static Change of(const NTransaction& row, const ChangeEntry& entry);
};

/// Why a change was not saved. Nothing of it is stored then.
enum class ChangeNotSaved {
    noRecordId,  ///< the record has no id
    notStored,   ///< the database did not take it, or the module has no fields
    // These are reasons of notes alone.
    noModule,        ///< the module is not stored, or has no fields
    noUser,          ///< the user of the account is not stored
    noRow,           ///< the edited record is not stored
    nothingChanged,  ///< the edit changes nothing that is sent
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
    static constexpr EnumCase<R> cases[] = {{R::earlierChange, "earlierChange"},
                                            {R::newRecord, "newRecord"},
                                            {R::notSendable, "notSendable"},
                                            {R::noToken, "noToken"},
                                            {R::server, "server"},
                                            {R::otherProcess, "otherProcess"},
                                            {R::queueOff, "queueOff"},
                                            {R::otherScope, "otherScope"},
                                            {R::heldBack, "heldBack"}};
};

template <>
struct EnumCases<ChangeNotSaved> {
    static constexpr EnumCase<ChangeNotSaved> cases[] = {
        {ChangeNotSaved::noRecordId, "noRecordId"}, {ChangeNotSaved::notStored, "notStored"},
        {ChangeNotSaved::noModule, "noModule"},     {ChangeNotSaved::noUser, "noUser"},
        {ChangeNotSaved::noRow, "noRow"},           {ChangeNotSaved::nothingChanged, "nothingChanged"}};
};

}  // namespace tarvo
