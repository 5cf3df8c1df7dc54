#pragma once

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/field/PicklistMetadataPersistanceDelegate.h"

namespace tarvo {

/// The table of picklist values.
class PicklistMetadataInDatabase final : public StaticDatabasePersistanceClass<PicklistMetadataDatabseConstants>,
                                         public PicklistMetadataPersistanceDelegate {
public:
    using StaticDatabasePersistanceClass::StaticDatabasePersistanceClass;

    bool storePicklistMetadata(const PicklistMetadata& picklist) override {
        return storePicklistMetadata(Picklist{picklist});
    }
    bool storePicklistMetadata(const std::vector<PicklistMetadata>& picklists) override;
    std::optional<Picklist> getPicklist(const std::string& moduleName, const std::optional<std::string>& layoutId,
                                        const std::vector<Criteria>& criteria) override;
    std::optional<Picklist> getPicklistMetadataForModuleWith(const std::string& moduleName) override;
    std::optional<std::unordered_map<std::string, Picklist>> getPicklistMetadataByModuleNames(
        const std::vector<std::string>& moduleNames) override;
    std::optional<Picklist> getPicklistMetadataForModuleWith(const std::string& moduleName,
                                                             const std::string& layoutID) override;
    std::optional<Picklist> getPicklistMetadataByFieldID(const std::string& fieldID) override;
    std::optional<Picklist> getPicklistMetadataByCrmColumnList(const std::string& moduleName,
                                                               const std::vector<std::string>& crmColumnList) override;

private:
    std::optional<Picklist> picklistWhere(std::vector<Criteria> criterias) const;

    static constexpr PicklistMetadataDatabseConstants constants_{};
};

}  // namespace tarvo
