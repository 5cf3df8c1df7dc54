#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/Record.h"
#include "tarvobase/transaction/TransactionManagerContract.h"
#include "tarvobase/value_objects/field/FieldList.h"

namespace tarvo {

/// Turns records into payloads of the current queue, and keeps the queue of a record short. The fields are those of the
/// record's module. Payloads are keyed by the API names of fields in either naming. Any thread may use it.
class AddEditRecordTransactionHandlerContract : public virtual platform::Object {
public:
    /// Returns the payload that the payloads of a record's transactions, oldest first, are together. The newer value
    /// wins. The rows of a subform are those of the newer list; one that both have keeps what only the older one sets.
    virtual ValueMap merge(const std::vector<ValueMap>& payloads, const FieldList& metadata) = 0;
    /// Returns what the server receives of a record: the columns that have a field, without the time and the user of
    /// the last change and without a temporary id of the record itself. A column without a value becomes an explicit
    /// null, so that the server clears the field. With `ignoreNullAndEmpty` it is left out, and so is an empty text.
    /// Whoever sends an edit sets its "id".
    virtual ValueMap getPayload(const Record& record, const FieldList& metadata, bool ignoreNullAndEmpty) = 0;
    ValueMap getPayload(const Record& record, const FieldList& metadata) { return getPayload(record, metadata, false); }
    /// Returns the ids of the records that a payload looks up. Owners and lookups of several records are not among
    /// them.
    virtual std::vector<std::string> getLookupRecords(const ValueMap& payload, const FieldList& metadata) = 0;

    /// Decides what becomes of a transaction that the server has refused. Call it after the refusal is recorded. An add
    /// whose record was deleted meanwhile vanishes with the delete. Any other is merged with what was queued after it,
    /// and is tried again until its attempts are used up. Returns whether that was stored.
    virtual bool handleError(const ErrorResponse& error, const NTransaction& transaction,
                             const FieldList& metadata) = 0;
    /// Merges the first two queued adds and edits of the transaction's record, or all of them once it has been merged
    /// often. The survivor takes the place of the newest, and has the kind of `transaction`: pass the add if one is
    /// queued. Returns whether the queue is as it should be.
    virtual bool mergeTransaction(const NTransaction& transaction, const FieldList& metadata) = 0;
};

class AddEditRecordTransactionHandler final : public AddEditRecordTransactionHandlerContract {
public:
    /// The manager owns the executors, and they their handlers, so it outlives this object. Takes the number of merges
    /// after which everything is merged at once (`CommonConfigration.maxSingleMerge`).
    AddEditRecordTransactionHandler(TransactionManagerContract& transactionManager, const Stores& stores,
                                    int maxSingleMerge)
        : transactionManager_(transactionManager), stores_(stores), maxSingleMerge_(maxSingleMerge) {}

    using AddEditRecordTransactionHandlerContract::getPayload;
    ValueMap merge(const std::vector<ValueMap>& payloads, const FieldList& metadata) override;
    ValueMap getPayload(const Record& record, const FieldList& metadata, bool ignoreNullAndEmpty) override;
    std::vector<std::string> getLookupRecords(const ValueMap& payload, const FieldList& metadata) override;
    bool handleError(const ErrorResponse& error, const NTransaction& transaction, const FieldList& metadata) override;
    bool mergeTransaction(const NTransaction& transaction, const FieldList& metadata) override;
    bool deleteTransaction(const NTransaction& transaction) {
        return transactionManager_.deleteTransactionWithId(transaction.id);
    }

private:
    using Group = std::vector<NTransaction>;
    using Attempts = TransactionManagerContract::Attempts;

    std::optional<Group> groupOf(const NTransaction& transaction) const;
    bool fold(const NTransaction& transaction, const Group& group, const FieldList& metadata, Attempts attempts);
    bool retry(const NTransaction& refused, const FieldList& metadata);

    TransactionManagerContract& transactionManager_;
    const Stores stores_;
    const int maxSingleMerge_;
};

}  // namespace tarvo
