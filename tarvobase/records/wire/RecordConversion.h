#pragma once

#include <memory>
#include <optional>

#include "tarvobase/records/Record.h"
#include "tarvobase/value_objects/field/FieldList.h"

namespace tarvo {

class RecordPlan;

/// Converts wire dictionaries to database dictionaries by a module's fields. Make it once for any number of records; it
/// keeps the naming and the host's settings of the time when it was made. May be used from any thread.
///
/// Only keys that a field names are converted. Dates become whole seconds since 1970, tags become a `TagList`, and a
/// note's attachments become the JSON bytes of their ids. A lookup's display text goes under its "_LOOKUP" column.
/// Everything else stays as it is. An absent value leaves its key out.
class RecordConversion {
public:
    explicit RecordConversion(const FieldList& metadata);
    ~RecordConversion();
    RecordConversion(RecordConversion&&) noexcept;

    ValueMap toDatabaseDictionary(const ValueMap& wire) const;
    /// Returns the dictionary in the form that a table takes, which is what `RecordPage` makes of the same record:
    /// lists of dependent records and of tags become their number, lists of texts and a note's attachments are joined
    /// by ",", and booleans become "true" or "false".
    ValueMap toRow(const ValueMap& wire) const;
    /// Returns a record of the field list's module, whose id is empty if the dictionary does not have one as a text.
    /// Returns nullopt if the field list is empty.
    std::optional<Record> toRecord(const ValueMap& wire) const;

private:
    std::unique_ptr<const RecordPlan> plan_;
};

/// Returns the columns of a record that have a value, in the form of `RecordConversion::toRow`. An empty list is stored
/// as 0 if its column holds records and as an empty text otherwise; only `fields` know the subforms among the columns.
ValueMap rowOf(const Record& record, const FieldIdentifier& naming, const FieldList* fields = nullptr);
/// Returns whether `rowOf` needs the fields of the record's module.
bool hasEmptyList(const Record& record);
/// Returns a dictionary that is keyed by columns in the form of `rowOf`.
ValueMap rowOf(const ValueMap& dictionary, const FieldList& fields);

/// Replaces the wire's keys by the names of the columns, those of companions included. A key without a field stays.
std::vector<ValueMap> underColumns(const std::vector<ValueMap>& wire, const FieldList& fields);

/// Returns the ids in a stored attachments column as a list of texts. The column holds the JSON bytes of such a list
/// or, for notes, the ids joined by ",". Returns nullopt for anything else.
std::optional<Value> attachmentIds(const ValueView& stored, const std::string& moduleName);

/// Convert one record. Make a `RecordConversion` for more than one.
ValueMap convertRecordFromNetworkToDBDictionary(const ValueMap& wire, const FieldList& metadata);
std::optional<Record> recordFromNetworkDictionary(const std::optional<ValueMap>& wire, const FieldList& with);

/// Convert the named keys of a dictionary in place, for dictionaries that are otherwise stored as they came. The first
/// turns dates and date-times into whole seconds since 1970, and a text that is not a date into 0. The second leaves a
/// multi-select lookup as it is and adds its ids, joined by ",", under the key with `lookupDataSuffix`.
void convertDateToTimestamp(ValueMap& wire, const std::vector<std::string>& keys, const FieldList& fieldList);
void createLookupFields(ValueMap& wire, const std::vector<std::string>& keys, const FieldList& fieldList);

/// Returns a stored value in the form in which it is sent, and null for one that has none: a date that is not a number
/// of seconds, for example.
Value wireValue(FieldDataType type, const ValueView& stored);
/// Does the same, and leaves a value that has no such form as it is: the server says what is wrong with it, and nothing
/// that the user entered is lost.
Value sentValue(FieldDataType type, const ValueView& stored);

/// Returns what is sent to the server: the fields for which the record has a value, by their API names. The time and
/// the user of the last change, the display texts of lookups, and values without a wire form are left out.
ValueMap convertRecordToNetworkDictionary(const Record& record, const FieldList& metadata);

}  // namespace tarvo
