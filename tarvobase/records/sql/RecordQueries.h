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

/// What reads of the record tables ask for, as SQL. Values become literals, so that any text means itself.
struct RecordQueries {
    using Names = std::vector<std::string>;

    /// The named columns, or those of all fields, with the display texts of lookups and what identifies a record; each
    /// once. `others` tells what becomes of names without a field.
    enum class Others { stay, areDropped };
    static Names getColumns(const std::optional<Names>& names, const FieldList& fields,
                            Others others = Others::areDropped);

    /// Columns as SQL selects them. One that the table lacks is there without a value.
    static Names selectList(const Names& columns, const TableAccess& table);
    /// Columns that records of a read by names have besides those, without a value: the row's number and the layout.
    /// One of the order's columns is read instead, since a column without a value would stand for it there.
    static Names defaultColumns(const Names& columns, const FieldList& fields, const Names& sortColumns);

    /// All of the values. A list stands for any of its items, a null for an empty column.
    static std::string getWhereString(const ValueMap& columnValues);
    /// Columns that are equal to columns.
    static std::string getWhereString(const std::map<std::string, std::string>& equalColumns);

    /// The conditions that are not empty, all of which must hold.
    static std::string allOf(const std::vector<std::string>& conditions);

    /// Lookups sort by what they show, picklists by the place of the label in their list and always upwards, numbers as
    /// numbers. A column without a field and a picklist without values give no term.
    static std::vector<SortDescriptor> getSortDescriptors(const std::vector<Sort<std::string>>& sorts,
                                                          const FieldList& fields);
};

}  // namespace tarvo
