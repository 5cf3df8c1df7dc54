#pragma once

#include <optional>
#include <vector>

#include "tarvobase/records/Record.h"
#include "tarvobase/value_objects/LayoutMetadata.h"

namespace tarvo {

/// Both absent are equal, one absent is not. Otherwise the same columns with the same values, compared as text, whole
/// number or real; other kinds of values count as equal.
bool areRecordsEqual(const std::optional<Record>& a, const std::optional<Record>& b);

/// A record of the same id and module with the required columns alone, the companions of lookups included, so that a
/// list row carries no more than its cells need. A column of the original that cannot be found is logged and left out.
Record reduceRecordSize(const Record& record, const std::vector<FieldMetadata>& requiredColumnsMetadata,
                        const FieldList& allMetadata, const std::vector<std::string>& allColumnsInOriginalRecord);

/// The entries of a layout that the record has something to show for: a value, a lookup's display text, or a part of a
/// person's name. An empty text counts as no value.
std::vector<LayoutMetadata> nonNullLayoutFields(const Record& record,
                                                const std::vector<LayoutMetadata>& layoutMetadata);

}  // namespace tarvo
