#pragma once

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/field/FieldMetadataPersistanceDelegate.h"

namespace tarvo {

/// The table of fields.
class FieldMetadataInDatabase final : public DatabasePersistanceClass, public FieldMetadataPersistanceDelegate {
public:
    FieldMetadataInDatabase(std::string tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter,
                            FieldMetadataDatabaseConstants databaseConstants = {});

    using FieldMetadataPersistanceDelegate::getFieldMetadata;
    Result<Fields, MetadataError> getFieldMetadata(const std::string& moduleName,
                                                   const std::optional<std::vector<std::string>>& fieldIdentifiers,
                                                   const std::vector<FieldSort>& sort) override;
    Result<std::unordered_map<std::string, Fields>, MetadataError> getFieldMetadataByModuleNames(
        const std::vector<std::string>& moduleNames, const std::vector<FieldSort>& sort) override;
    bool storeFieldMetadata(const FieldMetadata& fieldMetadata) override {
        return storeFieldMetadata(Fields{fieldMetadata});
    }
    bool storeFieldMetadata(const std::vector<FieldMetadata>& fieldMetadata) override;
    std::optional<Fields> getFieldMetadata(const std::string& moduleName) override;
    std::optional<Fields> getFieldMetadataByModuleNames(const std::vector<std::string>& moduleNames) override;
    std::optional<FieldMetadata> getFieldMetadataByCrmColumnName(const std::string& moduleName,
                                                                 const std::string& crmColumnName) override;
    std::optional<FieldMetadata> getFieldMetadataByFieldAPIName(const std::string& moduleName,
                                                                const std::string& fieldAPIName) override;
    std::optional<Fields> getFieldMetadata(FieldDataType metadataType) override;
    std::optional<Fields> getFieldMetadataByCrmColumnList(const std::string& moduleName,
                                                          const std::vector<std::string>& crmColumnList) override;
    std::optional<Fields> getSortFieldList(const std::string& moduleName) override;

private:
    std::optional<Fields> fieldsWhere(std::vector<Criteria> criterias, const std::vector<FieldSort>& sort = {}) const;
    std::optional<Fields> fieldsOf(const std::optional<Rows>& rows) const;
    std::optional<Fields> fieldsInStoredOrder(const std::optional<Rows>& rows) const;

    FieldMetadataDatabaseConstants databaseConstants_;
};

}  // namespace tarvo
