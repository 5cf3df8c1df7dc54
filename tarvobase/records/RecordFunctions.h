#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/records/Record.h"
#include "tarvobase/value_objects/layout/LayoutMetadata.h"

namespace tarvo {

class LinearLayoutMetadataItemType;

/// Returns whether two records have the same columns with the same values, which are compared as text, whole number or
/// real by the kind of the first; a first value of any other kind equals every value. Two absent records are equal, an
/// absent and a present one are not.
bool areRecordsEqual(const std::optional<Record>& a, const std::optional<Record>& b);

/// Returns a record of the same id and module with only the required columns and the companions of their lookups, so
/// that a list row carries no more than its cells need. A column of the original that cannot be found is logged and
/// left out. Fields are named as in `allMetadata`.
Record reduceRecordSize(const Record& record, const std::vector<FieldMetadata>& requiredColumnsMetadata,
                        const FieldList& allMetadata, const Record::Names& allColumnsInOriginalRecord);

/// Returns whether a field is the parent of a record whose parent is shown by a person's name: a lead or a contact.
bool isSeidAndNameField(const FieldMetadata& field, const Record& record);

/// Returns the entries of a layout for which the record has something to show: a value, a lookup's display text, or a
/// part of a person's name. An empty text counts as no value. The linear form also drops sections that keep no entry.
std::vector<LayoutMetadata> nonNullLayoutFields(const Record& record,
                                                const std::vector<LayoutMetadata>& layoutMetadata);
std::vector<LinearLayoutMetadataItemType> nonNullLayoutFields(
    const Record& record, const std::vector<LinearLayoutMetadataItemType>& layoutMetadata);

}  // namespace tarvo
