#pragma once

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tarvobase/change_queues/SelectedChange.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"
#include "tarvobase/value_objects/field/FieldList.h"

namespace tarvo {

/// Takes cancelled changes back from the records that they have changed here. Call it inside the transaction that has
/// taken the changes out of their queues; each operation returns false if the database refuses. Notices come after the
/// commit.
class RecordReversion {
public:
    /// A record and its module.
    using RecordOf = std::pair<std::string, std::string>;

    RecordReversion(const Stores& stores, std::shared_ptr<RecordPersistanceDelegate> records)
        : stores_(stores), records_(std::move(records)) {}

    /// Removes the record of an add, which exists here alone.
    bool removeAdded(const SelectedChange& add) const;
    /// Gives the columns that edits of a record have set the values that they had before, beneath those of the edits
    /// that are still queued. Without `revert` only those columns change that name one of `goneIds`, records that are
    /// not added after all.
    bool revertEdits(const std::string& moduleName, const std::string& recordId,
                     const std::vector<const SelectedChange*>& edits, bool revert,
                     const std::set<std::string>& goneIds);
    /// Brings back the row of a record whose delete is cancelled.
    bool restore(const SelectedChange& deletion);
    /// Forgets the former values of a record of which no change is left.
    bool tidy(const std::string& recordId) const;

    /// The records to be fetched from the server: their former values are not known here, or the server may have newer
    /// ones, which went beneath the changes unseen.
    const std::set<RecordOf>& outdated() const { return outdated_; }

private:
    /// What a queued change sets.
    struct Layer {
        bool isAdd = false;
        std::int64_t number = 0;
        ValueMap payload;
    };
    std::optional<std::vector<Layer>> layersOf(const std::string& moduleName, const std::vector<Transaction>& older,
                                               const std::vector<NTransaction>& current) const;
    std::optional<ValueMap> formerValues(const std::string& moduleName, const std::string& recordId,
                                         const FieldList& fields, bool& isRead) const;
    std::optional<QueuedNTransactions> currentOf(const std::string& recordId) const;
    bool write(const std::string& moduleName, const Record& record, ValueMap changed) const;
    bool layAddOver(ValueMap& values, const std::string& moduleName, const std::string& recordId) const;
    void fetchLater(const std::string& moduleName, const std::string& recordId);

    const Stores stores_;
    const std::shared_ptr<RecordPersistanceDelegate> records_;
    std::set<RecordOf> outdated_;
};

}  // namespace tarvo
