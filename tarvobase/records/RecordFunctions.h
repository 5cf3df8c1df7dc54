#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/records/Record.h"
#include "tarvobase/value_objects/layout/LayoutMetadata.h"

namespace tarvo {

class LinearLayoutMetadataItemType;

/// Both absent are equal, one absent is not. Otherwise the same columns with the same values, compared as text, whole
/// number or real by the kind of the first; a value of another kind equals any value.
bool areRecordsEqual(const std::optional<Record>& a, const std::optional<Record>& b);

/// A record of the same id and module with the required columns alone, the companions of lookups included, so that a
/// list row carries no more than its cells need. A column of the original that cannot be found is logged and left out.
/// Fields go by the naming of `allMetadata`.
Record reduceRecordSize(const Record& record, const std::vector<FieldMetadata>& requiredColumnsMetadata,
                        const FieldList& allMetadata, const Record::Names& allColumnsInOriginalRecord);

/// Whether a field is the parent of a record whose parent goes by a person's name: a lead or a contact.
bool isSeidAndNameField(const FieldMetadata& field, const Record& record);

/// The entries of a layout that the record has something to show for: a value, a lookup's display text, or a part of a
/// person's name. An empty text counts as no value. Of the linear form, sections that keep no entry go too.
std::vector<LayoutMetadata> nonNullLayoutFields(const Record& record,
                                                const std::vector<LayoutMetadata>& layoutMetadata);
std::vector<LinearLayoutMetadataItemType> nonNullLayoutFields(
    const Record& record, const std::vector<LinearLayoutMetadataItemType>& layoutMetadata);

}  // namespace tarvo
