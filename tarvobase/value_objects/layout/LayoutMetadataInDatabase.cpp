#include "tarvobase/value_objects/layout/LayoutMetadataInDatabase.h"

#include "tarvobase/utils/LogOnce.h"
#include "tarvobase/value_objects/field/FieldMetadataInDatabase.h"

namespace tarvo {

namespace {

using LayoutFields = LayoutMetadataPersistanceDelegate::LayoutFields;
using LayoutFieldsByName = LayoutMetadataPersistanceDelegate::LayoutFieldsByName;

constexpr LayoutMetadataDatabaseConstants constants;

FetchQuery query(const std::string& tableName, Criteria criteria, const std::vector<LayoutSort>& sortBy = {}) {
    FetchQuery query(tableName, std::move(criteria));
    query.sortBy = sortDescriptors(sortBy);
    return query;
}

std::string textOf(const Row& row, std::string_view column) { return row.valueOf(column).toText().value_or(""); }

std::optional<LayoutFields> joined(const std::optional<Rows>& rows, const FieldList& fieldList) {
    if (!rows) return std::nullopt;
    LayoutFields fields;
    for (auto row : *rows)
        if (auto field = constants.convertDictionaryToLayoutMetadata(row, fieldList))
            fields.push_back(*std::move(field));
    return fields;
}

/// Joins each row with the field of the module that it names and groups the results by a column.
template <class NotFound>
std::optional<LayoutFieldsByName> joinedBy(std::string_view column, const std::optional<Rows>& rows,
                                           const ModuleFieldsMap& moduleFieldsMap, NotFound&& notFound) {
    if (!rows) return std::nullopt;
    LayoutFieldsByName groups;
    for (auto row : *rows) {
        auto fieldList = moduleFieldsMap.find(textOf(row, constants.ModuleName));
        if (fieldList == moduleFieldsMap.end())
            notFound();
        else if (auto field = constants.convertDictionaryToLayoutMetadata(row, fieldList->second))
            groups[textOf(row, column)].push_back(*std::move(field));
    }
    return groups;
}

std::vector<std::string> namesOf(const ModuleFieldsMap& moduleFieldsMap) {
    std::vector<std::string> names;
    for (auto& [name, fields] : moduleFieldsMap) names.push_back(name);
    return names;
}

}  // namespace

std::shared_ptr<FieldMetadataPersistanceDelegate> LayoutMetadataInDatabase::fieldMetadataDAO() const {
    return std::make_shared<FieldMetadataInDatabase>(std::string(FieldMetadataDatabaseConstants().TableName),
                                                     table().adapter());
}

bool LayoutMetadataInDatabase::storeLayoutMetadata(const std::vector<LayoutFieldData>& places) {
    std::vector<ValueMap> rows;
    rows.reserve(places.size());
    for (auto& place : places) rows.push_back(constants.convertLayoutMetadataToDictionary(place));
    return table().store(std::move(rows));
}

bool LayoutMetadataInDatabase::storeLayoutMetadata(const std::vector<LayoutMetadata>& layoutMetadata) {
    std::vector<LayoutFieldData> places;
    places.reserve(layoutMetadata.size());
    for (auto& field : layoutMetadata) places.push_back(field.layoutFieldData());
    return storeLayoutMetadata(places);
}

std::optional<LayoutFields> LayoutMetadataInDatabase::getLayoutMetadata(const std::string& moduleName,
                                                                        const FieldList& fieldList,
                                                                        const std::vector<LayoutSort>& sortBy) {
    auto rows = table().fetch(query(table().tableName(), columnIs(constants.ModuleName, moduleName), sortBy));
    return joined(rows, fieldList);
}

std::optional<LayoutFieldsByName> LayoutMetadataInDatabase::getLayoutMetadata(const ModuleFieldsMap& moduleFieldsMap,
                                                                              const std::vector<LayoutSort>& sortBy) {
    auto rows =
        table().fetch(query(table().tableName(), columnIn(constants.ModuleName, namesOf(moduleFieldsMap)), sortBy));
    return joinedBy(constants.ModuleName, rows, moduleFieldsMap, [] {});
}

std::optional<LayoutFields> LayoutMetadataInDatabase::getLayoutMetadata(const std::vector<ModuleLayoutInfo>& layouts,
                                                                        const FieldList& fieldList) {
    std::vector<std::string> layoutIds;
    for (auto& layout : layouts) layoutIds.push_back(layout.layoutID);
    auto rows =
        table().fetch(query(table().tableName(), Criteria::and_({columnIs(constants.ModuleName, fieldList.moduleName()),
                                                                 columnIn(constants.LayoutID, layoutIds)})));
    return joined(rows, fieldList);
}

std::optional<LayoutFieldsByName> LayoutMetadataInDatabase::getLayoutMetadatas(
    const std::vector<std::string>& layoutIds, const ModuleFieldsMap& moduleFieldsMap) {
    auto rows = table().fetch(query(table().tableName(), columnIn(constants.LayoutID, layoutIds)));
    return joinedBy(constants.LayoutID, rows, moduleFieldsMap, [] { logOnce("moduleName or fields not found"); });
}

std::optional<std::string> LayoutMetadataInDatabase::getModuleName(const std::string& forLayoutId) {
    auto names = getModuleNames({forLayoutId});
    if (!names || names->empty()) return std::nullopt;
    return std::move(names->begin()->second);
}

std::optional<std::unordered_map<std::string, std::string>> LayoutMetadataInDatabase::getModuleNames(
    const std::vector<std::string>& layoutIds) {
    auto asked = query(table().tableName(), columnIn(constants.LayoutID, layoutIds));
    asked.columns = {"DISTINCT " + std::string(constants.LayoutID), std::string(constants.ModuleName)};
    auto rows = table().fetch(asked);
    if (!rows) return std::nullopt;
    std::unordered_map<std::string, std::string> names;
    for (auto row : *rows) names.emplace(textOf(row, constants.LayoutID), textOf(row, constants.ModuleName));
    return names;
}

}  // namespace tarvo
