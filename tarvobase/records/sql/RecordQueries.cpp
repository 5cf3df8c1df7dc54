#include "tarvobase/records/sql/RecordQueries.h"

#include <algorithm>

#include "kelva_db/Database.h"
#include "platform/Text.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/utils/LogOnce.h"
#include "tarvobase/value_objects/field/FieldList.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

using Names = RecordQueries::Names;
using kelva::quotedName;

void addOnce(Names& names, std::string_view name) {
    if (!text::contains(names, name)) names.emplace_back(name);
}

/// Adds the literals by which a column may hold a value. The server also sends numbers and booleans as texts, and a
/// column without a type treats a number and its text as different.
void addLiterals(std::vector<std::string>& literals, const Value& value) {
    if (value.isNull() || value.kind() == ValueKind::object) return;
    literals.push_back(kelva::literal(value));
    if (auto text = value.asText() ? std::nullopt : value.toText()) literals.push_back(kelva::literal(*text));
}

std::string condition(const std::string& column, const Value& value) {
    auto name = quotedName(column);
    if (value.isNull()) return name + " IS NULL";
    std::vector<std::string> literals;
    if (auto items = value.asList())
        for (auto& item : *items) addLiterals(literals, item);
    else
        addLiterals(literals, value);
    return name + " IN (" + text::join(literals, ", ") + ")";
}

SortDescriptor byPlaceInList(const std::string& column, const std::vector<PicklistMetadata>& values) {
    std::string term = "CASE \n";
    for (auto& value : values)
        // Ignores the case of letters as LIKE does, but percent signs and underscores stand for themselves.
        term += "WHEN " + column + " = " + kelva::literal(value.fieldOptionalValue) + " COLLATE NOCASE THEN " +
                std::to_string(value.position) + "\n";
    return SortDescriptor::customOrderBy(term + "END \n");
}

}  // namespace

Names RecordQueries::getColumns(const std::optional<Names>& names, const FieldList& fields, UnknownNames unknownNames) {
    Names columns;
    auto add = [&](const std::string& name, const FieldMetadata* field) {
        addOnce(columns, name);
        if (field && field->isLookUpField()) addOnce(columns, getLookupColumn(name));
    };
    if (names) {
        for (auto& name : *names)
            if (auto field = fields.getField(name); field || unknownNames == UnknownNames::keep) add(name, field);
    } else {
        for (auto field : fields.allFields()) add(fields.identifierOf(*field), field);
    }
    addOnce(columns, RecordUtil::getIdentifierFieldName(fields.moduleName(), fields.naming()));
    addOnce(columns, fields.naming().constant->id);
    return columns;
}

Names RecordQueries::selectList(const Names& columns, const TableAccess& table) {
    Names list;
    auto inTable = table.columns();
    for (auto& column : columns)
        list.push_back(table.has(column, inTable) ? quotedName(column) : "NULL AS " + quotedName(column));
    return list;
}

Names RecordQueries::defaultColumns(const Names& columns, const FieldList& fields, const Names& sortColumns) {
    auto& names = *fields.naming().constant;
    Names list;
    for (std::string column : {std::string(names.rowID), std::string(names.layout)})
        if (!text::contains(columns, column) && (column == names.rowID || fields.hasField(column)))
            list.push_back((text::contains(sortColumns, column) ? "" : "NULL AS ") + quotedName(column));
    return list;
}

std::string RecordQueries::getWhereString(const ValueMap& columnValues) {
    std::vector<std::string> conditions;
    for (auto& entry : columnValues) conditions.push_back(condition(std::string(entry.name), entry.value));
    return text::join(conditions, " AND ");
}

std::string RecordQueries::getWhereString(const std::map<std::string, std::string>& equalColumns) {
    std::vector<std::string> conditions;
    for (auto& [column, other] : equalColumns) conditions.push_back(quotedName(column) + " = " + quotedName(other));
    return text::join(conditions, " AND ");
}

std::string RecordQueries::allOf(const std::vector<std::string>& conditions) {
    std::vector<std::string> given;
    for (auto& condition : conditions)
        if (!condition.empty()) given.push_back("(" + condition + ")");
    return text::join(given, " AND ");
}

std::vector<SortDescriptor> RecordQueries::getSortDescriptors(const std::vector<Sort<std::string>>& sorts,
                                                              const FieldList& fields) {
    std::vector<SortDescriptor> descriptors;
    for (auto& sort : sorts) {
        auto field = fields.getField(sort.column);
        if (!field) {
            logOnce("no field for the sort column " + sort.column + " of " + fields.moduleName());
            continue;
        }
        bool ascending = sort.order == SortOrder::ascending;
        auto& picklists = fields.picklistIdentifierMap();
        auto picklist = picklists.find(sort.column);
        if (field->isLookUpField())
            descriptors.emplace_back(
                SortDescriptor::Parts{.colName = quotedName(getLookupColumn(sort.column)), .ascending = ascending});
        else if (!isPickListField(field->fieldType))
            descriptors.emplace_back(SortDescriptor::Parts{
                .colName = quotedName(sort.column), .ascending = ascending, .numeric = isNumeric(field->fieldType)});
        else if (picklist != picklists.end() && !picklist->second.empty())
            descriptors.push_back(byPlaceInList(quotedName(sort.column), picklist->second));
    }
    return descriptors;
}

}  // namespace tarvo
