#pragma once

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/field/FieldMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/layout/LayoutMetadataPersistanceDelegate.h"

namespace tarvo {

/// The table of layouts.
class LayoutMetadataInDatabase final : public StaticDatabasePersistanceClass<LayoutMetadataDatabaseConstants>,
                                       public LayoutMetadataPersistanceDelegate {
public:
    using StaticDatabasePersistanceClass::StaticDatabasePersistanceClass;

    /// Returns the store of fields over the same adapter.
    std::shared_ptr<FieldMetadataPersistanceDelegate> fieldMetadataDAO() const;

    using LayoutMetadataPersistanceDelegate::getLayoutMetadata;
    bool storeLayoutMetadata(const std::vector<LayoutFieldData>& places) override;
    bool storeLayoutMetadata(const LayoutMetadata& layoutMetadata) override {
        return storeLayoutMetadata(LayoutFields{layoutMetadata});
    }
    bool storeLayoutMetadata(const std::vector<LayoutMetadata>& layoutMetadata) override;
    std::optional<LayoutFields> getLayoutMetadata(const std::string& moduleName, const FieldList& fieldList,
                                                  const std::vector<LayoutSort>& sortBy) override;
    std::optional<LayoutFieldsByName> getLayoutMetadata(const ModuleFieldsMap& moduleFieldsMap,
                                                        const std::vector<LayoutSort>& sortBy) override;
    std::optional<LayoutFields> getLayoutMetadata(const std::vector<ModuleLayoutInfo>& layouts,
                                                  const FieldList& fieldList) override;
    std::optional<LayoutFieldsByName> getLayoutMetadatas(const std::vector<std::string>& layoutIds,
                                                         const ModuleFieldsMap& moduleFieldsMap) override;
    std::optional<std::string> getModuleName(const std::string& forLayoutId) override;
    std::optional<std::unordered_map<std::string, std::string>> getModuleNames(
        const std::vector<std::string>& layoutIds) override;
};

}  // namespace tarvo
