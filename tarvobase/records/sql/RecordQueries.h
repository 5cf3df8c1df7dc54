#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/Rows.h"
#include "tarvobase/database_layer/SortDescriptor.h"
#include "tarvobase/value_objects/field/Sort.h"

namespace tarvo {

class FieldList;
class TableAccess;

/// Writes reads of the record tables as SQL, piece by piece. Values become literals, so that any text means itself.
struct RecordQueries {
    using Names = std::vector<std::string>;

    /// What happens to names without a field.
    enum class UnknownNames { keep, drop };
    /// Returns the named columns, or those of all fields, with the display texts of lookups and the identifier of a
    /// record, each once.
    static Names getColumns(const std::optional<Names>& names, const FieldList& fields,
                            UnknownNames unknownNames = UnknownNames::drop);

    /// Returns columns as SQL selects them. A column that the table lacks is selected as NULL.
    static Names selectList(const Names& columns, const TableAccess& table);
    /// Returns the columns that records have in addition to the requested ones, as NULL: the row's number and the
    /// layout. A column of the order is read for real, since its NULL would replace the column in the order.
    static Names defaultColumns(const Names& columns, const FieldList& fields, const Names& sortColumns);

    /// Returns the condition that all values match. A list matches any of its items, a null matches an empty column.
    static std::string getWhereString(const ValueMap& columnValues);
    /// Returns the condition that all pairs of columns are equal.
    static std::string getWhereString(const std::map<std::string, std::string>& equalColumns);

    /// Joins the conditions that are not empty with AND.
    static std::string allOf(const std::vector<std::string>& conditions);

    /// Returns order terms. Lookups sort by their display text, picklists by the place of the label in their list and
    /// always ascending, numbers as numbers. A column without a field and a picklist without values give no term.
    static std::vector<SortDescriptor> getSortDescriptors(const std::vector<Sort<std::string>>& sorts,
                                                          const FieldList& fields);
};

}  // namespace tarvo
