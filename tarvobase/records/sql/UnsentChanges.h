#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/FunctionRef.h"
#include "platform/Value.h"
#include "tarvobase/value_objects/field/FieldList.h"
#include "tarvobase/value_objects/transaction/TransactionPersistanceDelegate.h"
#include "tarvobase/value_objects/transaction/TransactionPersistence.h"

namespace tarvo {

class DatabaseAdapter;
class Stores;

/// What the user has changed in records of one module and the server does not have yet, in either queue. Every answer
/// of the server is stored beneath it: a page that was on its way would otherwise take a change from the screen, and
/// saving the whole record would then undo it at the server too. Edits that the server has refused count as well, as
/// long as they are in the queue; a record whose delete it has refused comes back. The table of "Activities" shows the
/// changes of tasks, events and calls.
class UnsentChanges {
public:
    struct Queues {
        std::shared_ptr<TransactionPersistanceDelegate> older;
        std::shared_ptr<TransactionPersistence> current;
    };

    /// The adapter and the fields must outlive it.
    UnsentChanges(const std::shared_ptr<DatabaseAdapter>& databaseAdapter, Queues queues, const FieldList& fields);

    /// Runs `store`, which stores values of the server for these records, and lays their changes over them: edited
    /// columns keep their local values, and the rows of deleted records go. Call it inside the transaction that stores.
    /// Returns false if the database failed or `store` returned false.
    bool layOver(const std::vector<std::string>& recordIds, platform::FunctionRef<bool()> store) const;
    /// Returns the records of which the server may have a change that is still in a queue, its answer being on its way
    /// or lost: edits, and adds under their temporary ids. Returns nullopt if that cannot be read.
    static std::optional<std::set<std::string>> recordsWithSentChanges(const Stores& stores);
    /// Returns the columns of a record that edits in a queue set, or nullopt if a queue cannot be read.
    std::optional<std::set<std::string>> editedColumns(const std::string& recordId) const;

private:
    struct Changes {
        std::map<std::string, std::set<std::string>> columns;  // that edits set, by record
        std::set<std::string> deletedIds;
    };
    struct Edit {
        std::string recordId;
        ValueMap values;
    };
    std::optional<Changes> readChanges(const std::vector<std::string>& recordIds) const;
    void addChange(const Transaction& change, Changes& changes) const;
    void addChange(const NTransaction& change, Changes& changes) const;
    std::optional<std::vector<Edit>> readEdits(const Changes& changes) const;
    void addColumns(const ValueMap& payload, std::set<std::string>& columns) const;

    const std::shared_ptr<DatabaseAdapter>& databaseAdapter_;
    const Queues queues_;
    const FieldList& fields_;
    const std::string table_, idColumn_;
};

}  // namespace tarvo
