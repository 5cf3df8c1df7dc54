#pragma once

#include <string>
#include <string_view>

#include "platform/Result.h"
#include "platform/Value.h"
#include "sandbox/changes/RecordDraft.h"
#include "sandbox/data/RecordShape.h"

namespace tarvo::sandbox {

struct UserData;

/// Says who sends a payload. What a client sends for a field that only the server sets is ignored; a control call may
/// set such fields.
enum class Sender { client, control };

/// Holds one member of a payload and everything that is needed to read it.
struct FieldInput {
    const DataSet& data;
    RecordDraft& draft;
    Sender sender;
    const RecordShape& shape;
    const RecordShape::Field& field;
    const Value& json;
    /// The value before the change, from which the rows of a list are taken over; null for a new record.
    const RecordValue* before = nullptr;
};

/// Reads the value of a field from JSON; null clears it. A failure says what the field takes or names, to follow the
/// field's name in a message. It holds no value of the payload.
Result<RecordValue, std::string> readField(const FieldInput& input);

/// Returns whether a client sends this field in vain: it is checked for temporary ids and otherwise ignored.
bool isIgnored(const RecordShape::Field& field, Sender sender);

/// Returns the value of an empty field.
RecordValue emptyValue(const FieldData& field);
RecordValue userValue(const UserData& user);

/// Returns whether it is an id that a client has made up for a record that it has not sent yet.
bool isTemporaryId(std::string_view id);

}  // namespace tarvo::sandbox
