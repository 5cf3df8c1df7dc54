#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "platform/Value.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/transaction/Change.h"
#include "tarvobase/value_objects/transaction/ChangeRegister.h"

namespace tarvo {

/// A change of either queue that the user has chosen, with its row.
class SelectedChange {
public:
    /// Finds the row of an entry. Returns nullopt if it is gone or cannot be read.
    static std::optional<SelectedChange> of(const Stores& stores, const ChangeEntry& entry);

    const ChangeEntry& entry() const { return entry_; }
    /// The row, or null if it is in the other queue.
    const Transaction* older() const { return std::get_if<Transaction>(&row_); }
    const NTransaction* current() const { return std::get_if<NTransaction>(&row_); }

    const std::string& moduleName() const { return moduleName_; }
    const std::string& recordId() const;
    bool isEdit() const;
    bool isDelete() const;
    /// Returns the payload of an add or an edit, keyed by API names; nullopt if there is none.
    std::optional<ValueMap> payload() const;
    /// Returns whether the server may have the change.
    bool mayHaveArrived() const;
    /// Returns whether the record exists here alone until the server has accepted the change.
    bool createsRecord() const;
    /// Returns the number by which transactions of the current queue wait for the change. 0 means that none can.
    std::int64_t place() const;
    /// Returns the change as observers see it.
    Change change() const;

private:
    using Row = std::variant<Transaction, NTransaction>;
    SelectedChange(ChangeEntry entry, Row row);

    ChangeEntry entry_;
    Row row_;
    std::string moduleName_;
};

}  // namespace tarvo
