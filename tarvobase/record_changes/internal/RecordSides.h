#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Value.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/value_objects/field/FieldList.h"

namespace tarvo {

/// The two sides of a record with changes that wait are dictionaries that are keyed by columns.
struct RecordSides {
    /// Lays a payload, or a record of the server, over a dictionary. A column that it sets loses the texts that are
    /// shown for its former value, unless they come with it. A value that is null takes the column out. The id stays.
    static void layOver(ValueMap& columns, const ValueMap& wire, const FieldList& fields);
    /// Forgets both sides of a record, in either queue. Returns false if the database refuses.
    static bool remove(const Stores& stores, const std::string& recordId);
    /// Returns the column of an entry of a payload with those that hold its shown texts. Returns none for the record's
    /// id, and for a name without a field.
    static std::vector<std::string> columnsOf(std::string_view apiName, const FieldList& fields);
};

}  // namespace tarvo
