#include "tarvobase/value_objects/field/FieldMetadataInDatabase.h"

#include <algorithm>

#include "kelva_db/Database.h"

namespace tarvo {

namespace {

/// Orders rows as they were stored, which is the server's order of the fields.
constexpr const char* rowNumber = "_id";

struct NumberedField {
    std::int64_t number;
    FieldMetadata field;
};

}  // namespace

FieldMetadataInDatabase::FieldMetadataInDatabase(std::string tableName,
                                                 std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                                 FieldMetadataDatabaseConstants databaseConstants)
    : DatabasePersistanceClass(std::move(tableName), std::move(databaseAdapter)),
      databaseConstants_(databaseConstants) {}

bool FieldMetadataInDatabase::storeFieldMetadata(const std::vector<FieldMetadata>& fieldMetadata) {
    return table().store(rowsOf(fieldMetadata, databaseConstants_));
}

Result<FieldMetadataPersistanceDelegate::Fields, MetadataError> FieldMetadataInDatabase::getFieldMetadata(
    const std::string& moduleName, const std::optional<std::vector<std::string>>& fieldIdentifiers,
    const std::vector<FieldSort>& sort) {
    std::vector<Criteria> criterias{columnIs(databaseConstants_.ModuleName, moduleName)};
    if (fieldIdentifiers) criterias.push_back(columnIn(databaseConstants_.fieldIdentifier(), *fieldIdentifiers));
    auto fields = fieldsWhere(std::move(criterias), sort);
    if (!fields || fields->empty()) return MetadataError::notFound;
    return *std::move(fields);
}

Result<std::unordered_map<std::string, FieldMetadataPersistanceDelegate::Fields>, MetadataError>
FieldMetadataInDatabase::getFieldMetadataByModuleNames(const std::vector<std::string>& moduleNames,
                                                       const std::vector<FieldSort>& sort) {
    auto modules = groupedBy(&FieldMetadata::moduleName,
                             fieldsWhere({columnIn(databaseConstants_.ModuleName, moduleNames)}, sort));
    if (!modules || modules->empty()) return MetadataError::notFound;
    return *std::move(modules);
}

std::optional<FieldMetadataPersistanceDelegate::Fields> FieldMetadataInDatabase::getFieldMetadata(
    const std::string& moduleName) {
    return fieldsWhere({columnIs(databaseConstants_.ModuleName, moduleName)});
}

std::optional<FieldMetadataPersistanceDelegate::Fields> FieldMetadataInDatabase::getFieldMetadataByModuleNames(
    const std::vector<std::string>& moduleNames) {
    return fieldsWhere({columnIn(databaseConstants_.ModuleName, moduleNames)});
}

std::optional<FieldMetadata> FieldMetadataInDatabase::getFieldMetadataByCrmColumnName(
    const std::string& moduleName, const std::string& crmColumnName) {
    return firstOf(fieldsWhere({columnIs(databaseConstants_.ModuleName, moduleName),
                                columnIs(databaseConstants_.crmColumn(), crmColumnName)}));
}

std::optional<FieldMetadata> FieldMetadataInDatabase::getFieldMetadataByFieldAPIName(const std::string& moduleName,
                                                                                     const std::string& fieldAPIName) {
    return firstOf(fieldsWhere({columnIs(databaseConstants_.ModuleName, moduleName),
                                columnIs(databaseConstants_.fieldApiName(), fieldAPIName)}));
}

std::optional<FieldMetadataPersistanceDelegate::Fields> FieldMetadataInDatabase::getFieldMetadata(
    FieldDataType metadataType) {
    FetchQuery query(tableName, columnIs(databaseConstants_.FieldType, std::string(rawText(metadataType))));
    query.sortBy = {SortDescriptor({.colName = rowNumber, .numeric = true})};
    return fieldsOf(table().fetch(query));
}

std::optional<FieldMetadataPersistanceDelegate::Fields> FieldMetadataInDatabase::getFieldMetadataByCrmColumnList(
    const std::string& moduleName, const std::vector<std::string>& crmColumnList) {
    return fieldsWhere(
        {columnIs(databaseConstants_.ModuleName, moduleName), columnIn(databaseConstants_.crmColumn(), crmColumnList)});
}

std::optional<FieldMetadataPersistanceDelegate::Fields> FieldMetadataInDatabase::getSortFieldList(
    const std::string& moduleName) {
    if (!databaseAdapter) return std::nullopt;
    auto& names = databaseConstants_;
    auto sql = "Select * from " + tableName + " where " + std::string(names.ModuleName) + " = " +
               kelva::literal(moduleName) + " and " + std::string(names.IsMproxyMetadata) + " = " +
               kelva::literal("false") + " order by " + std::string(names.FieldLabel);
    return fieldsOf(databaseAdapter->fetchObjects(sql, std::nullopt));
}

std::optional<FieldMetadataPersistanceDelegate::Fields> FieldMetadataInDatabase::fieldsWhere(
    std::vector<Criteria> criterias, const std::vector<FieldSort>& sort) const {
    FetchQuery query(tableName);
    query.criterias = std::move(criterias);
    query.sortBy = sortDescriptors(sort);
    auto rows = table().fetch(query);
    return sort.empty() ? fieldsInStoredOrder(rows) : fieldsOf(rows);
}

std::optional<FieldMetadataPersistanceDelegate::Fields> FieldMetadataInDatabase::fieldsInStoredOrder(
    const std::optional<Rows>& rows) const {
    auto numbered = table().readableOf(rows, [this](const Row& row) {
        auto number = row.find(rowNumber);
        return databaseConstants_.getValue(row).map([&](FieldMetadata&& field) {
            return NumberedField{number ? number->asInteger().value_or(0) : 0, std::move(field)};
        });
    });
    if (!numbered) return std::nullopt;
    std::stable_sort(numbered->begin(), numbered->end(), [](auto& a, auto& b) { return a.number < b.number; });
    Fields fields;
    fields.reserve(numbered->size());
    for (auto& one : *numbered) fields.push_back(std::move(one.field));
    return fields;
}

std::optional<FieldMetadataPersistanceDelegate::Fields> FieldMetadataInDatabase::fieldsOf(
    const std::optional<Rows>& rows) const {
    return table().readableOf(rows, [this](const Row& row) { return databaseConstants_.getValue(row); });
}

}  // namespace tarvo
