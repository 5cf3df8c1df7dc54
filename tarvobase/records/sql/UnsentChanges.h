#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/FunctionRef.h"
#include "platform/Value.h"
#include "tarvobase/value_objects/field/FieldList.h"
#include "tarvobase/value_objects/transaction/TransactionPersistanceDelegate.h"

namespace tarvo {

class DatabaseAdapter;

/// What the user has changed in records of one module and the server does not have yet. Every answer of the server is
/// stored beneath it: a page that was on its way would otherwise take a change from the screen, and saving the whole
/// record would then undo it at the server too. Edits that the server has refused count as well, as long as they are in
/// the queue; a record whose delete it has refused comes back. The table of "Activities" shows the changes of tasks,
/// events and calls.
class UnsentChanges {
public:
    /// The references must outlive it.
    UnsentChanges(const std::shared_ptr<DatabaseAdapter>& databaseAdapter, TransactionPersistanceDelegate& queue,
                  const FieldList& fields);

    /// Runs `store`, which stores values of the server for these records, and lays their changes over them: edited
    /// columns keep their local values, and the rows of deleted records go. Call it inside the transaction that stores.
    /// Returns false if the database failed or `store` returned false.
    bool layOver(const std::vector<std::string>& recordIds, platform::FunctionRef<bool()> store) const;
    /// Returns the columns of a record that edits in the queue set, or nullopt if the queue cannot be read.
    std::optional<std::set<std::string>> editedColumns(const std::string& recordId) const;

private:
    struct Edit {
        std::string recordId;
        std::set<std::string> columns;
        ValueMap values;
    };
    struct Changes {
        std::vector<Edit> edits;
        std::vector<std::string> deletedIds;
    };
    bool readChanges(const std::vector<std::string>& recordIds, Changes& changes) const;
    void addChange(const Transaction& change, Changes& changes) const;
    bool readValues(Edit& edit) const;
    void addColumns(const Transaction& change, std::set<std::string>& columns) const;

    const std::shared_ptr<DatabaseAdapter>& databaseAdapter_;
    TransactionPersistanceDelegate& queue_;
    const FieldList& fields_;
    const std::string table_, idColumn_;
};

}  // namespace tarvo
