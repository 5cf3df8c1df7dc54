#pragma once

#include <optional>

#include "platform/Data.h"
#include "tarvobase/records/Record.h"
#include "tarvobase/value_objects/field/FieldList.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

namespace tarvo {

/// What the server receives of a record that was added or edited here, keyed by the API names of its fields in either
/// naming. Any thread may use it.
///
/// - The columns that have a field go out. The time and the user of the last change do not, since the server sets them,
///   and neither do tags and attachments, which have calls of their own.
/// - A column without a value is null in an edit, so that the server clears the field. An add leaves it out.
/// - Rows of other tables go out as a list of maps or not at all: a record that was read back has only their number.
/// - An edit has the record's id, which may still be a temporary one. An add leaves it out.
struct ChangePayload {
    /// Takes the type `addRecord` or `editRecord`. The fields are those of the record's module.
    static ValueMap of(const Record& record, const FieldList& fields, TransactionType type);
    /// Returns the payload in the body of a queued change, or nullopt if it has none.
    static std::optional<ValueMap> of(const Transaction& change);
    /// Returns the body of the request, or nullopt if the payload holds a value that JSON cannot express.
    static std::optional<platform::Data> body(const ValueMap& payload);
};

}  // namespace tarvo
