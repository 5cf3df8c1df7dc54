#pragma once

#include <memory>
#include <optional>

#include "tarvobase/records/Record.h"
#include "tarvobase/value_objects/field/FieldList.h"

namespace tarvo {

class RecordPlan;

/// A wire dictionary and the database dictionary into each other, by a module's fields. Made once for any number of
/// records; it keeps the naming and the settings of the host as they stood then. From any thread.
///
/// Into the database only what the fields name gets in: dates become whole seconds since 1970, tags a `TagList`, a
/// note's attachments the JSON bytes of their ids; a lookup's display text goes under its "_LOOKUP" column; everything
/// else stays as it is. A value that is absent leaves the key out.
class RecordConversion {
public:
    explicit RecordConversion(const FieldList& metadata);
    ~RecordConversion();
    RecordConversion(RecordConversion&&) noexcept;

    ValueMap toDatabaseDictionary(const ValueMap& wire) const;
    /// The dictionary in the form that a table takes: of lists of dependent records and of tags their number, of the
    /// attachments of a note their ids joined by ",". What `RecordPage` makes of the same record.
    ValueMap toRow(const ValueMap& wire) const;
    /// A record of the field list's module; its id is empty when the dictionary has none as text. Nothing for a list
    /// without fields.
    std::optional<Record> toRecord(const ValueMap& wire) const;

private:
    std::unique_ptr<const RecordPlan> plan_;
};

/// What a record brings to its table: the columns with a value, in the form of `RecordConversion::toRow`.
ValueMap rowOf(const Record& record, const FieldIdentifier& naming);

/// The ids in a stored attachments column, as a list of texts: of the bytes of such a list and, for notes, of the ids
/// joined by ",". Nothing for what holds neither.
std::optional<Value> attachmentIds(const ValueView& stored, const std::string& moduleName);

/// The same for one record. For several make a `RecordConversion`.
ValueMap convertRecordFromNetworkToDBDictionary(const ValueMap& wire, const FieldList& metadata);
std::optional<Record> recordFromNetworkDictionary(const std::optional<ValueMap>& wire, const FieldList& with);

/// For dictionaries that are stored as they came, in place, by the keys that are named. Dates and date-times become
/// whole seconds since 1970, 0 for a text that is none; the other leaves a lookup of several records as it is and puts
/// its ids, joined by ",", under the key with `lookupDataSuffix`.
void convertDateToTimestamp(ValueMap& wire, const std::vector<std::string>& keys, const FieldList& fieldList);
void createLookupFields(ValueMap& wire, const std::vector<std::string>& keys, const FieldList& fieldList);

/// What goes to the server: the fields that the record has a value for, by their API names, but for the time and the
/// user of the last change and the display texts of lookups. A value that has no wire form stays away.
ValueMap convertRecordToNetworkDictionary(const Record& record, const FieldList& metadata);

}  // namespace tarvo
