#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

namespace tarvo {

/// Gives a record that was added here the server's id, wherever the local database names the temporary one: its row and
/// the rows that depend on it, its places in views, its tags, the changes that wait, the records that they change, and
/// both sides of those records. Nothing but a record with changes that wait can name a temporary id, so no table is
/// scanned. The temporary id stays known as an alias. Any thread may use it; each call blocks its caller.
class RecordIdReplacement {
public:
    explicit RecordIdReplacement(const Stores& stores);

    /// Call it inside the transaction that stores the server's answer. If the server's row is there already, because a
    /// page or a sync brought it first, that row stays and takes local values where it has none or an edit waits.
    /// Returns false if something could not be stored; the transaction must then be undone.
    bool replace(const std::string& moduleName, const std::string& formerId, const std::string& newId) const;

private:
    bool replaceRows(const std::string& moduleName, const std::string& formerId, const std::string& newId) const;
    bool replaceRow(const std::string& moduleName, const std::string& formerId, const std::string& newId) const;
    bool replaceInDependents(const std::string& moduleName, const std::string& formerId,
                             const std::string& newId) const;
    bool replaceInQueue(const std::string& formerId, const std::string& newId) const;
    bool replaceInCurrentQueue(const std::string& formerId, const std::string& newId) const;
    bool replaceInRecord(const Transaction& change, const std::string& formerId, const std::string& newId) const;
    bool replaceInRow(const std::string& moduleName, const std::string& recordId, const std::string& formerId,
                      const std::string& newId) const;
    std::optional<std::set<std::string>> editedColumns(const std::string& moduleName,
                                                       const std::string& recordId) const;
    bool replaceInCurrentSides(const std::string& recordId, const std::string& formerId,
                               const std::string& newId) const;
    bool replaceInSides(const std::string& recordId, const std::string& formerId, const std::string& newId) const;
    bool moveColumn(const std::string& table, std::string_view column, const std::string& formerId,
                    const std::string& newId) const;

    const Stores stores_;
    const std::shared_ptr<GetFieldListDM> fieldLists_;
};

}  // namespace tarvo
