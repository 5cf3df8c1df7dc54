#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/database_layer/Criteria.h"
#include "tarvobase/value_objects/field/PicklistMetadata.h"

namespace tarvo {

/// The store of picklist values. Lists are ordered by `position`. They are empty if nothing is found, and nullopt if
/// the store cannot be read. A damaged row is left out. Writes return whether they were stored. Any thread may use it.
class PicklistMetadataPersistanceDelegate : public virtual platform::Object {
public:
    using Picklist = std::vector<PicklistMetadata>;

    virtual bool storePicklistMetadata(const PicklistMetadata& picklist) = 0;
    virtual bool storePicklistMetadata(const std::vector<PicklistMetadata>& picklists) = 0;
    /// Returns the values of a module, limited to one layout if it is given and to the caller's conditions on the
    /// table's columns.
    virtual std::optional<Picklist> getPicklist(const std::string& moduleName,
                                                const std::optional<std::string>& layoutId,
                                                const std::vector<Criteria>& criteria) = 0;
    virtual std::optional<Picklist> getPicklistMetadataForModuleWith(const std::string& moduleName) = 0;
    /// Returns the values by module name, with one query. A module without picklists has no entry.
    virtual std::optional<std::unordered_map<std::string, Picklist>> getPicklistMetadataByModuleNames(
        const std::vector<std::string>& moduleNames) = 0;
    virtual std::optional<Picklist> getPicklistMetadataForModuleWith(const std::string& moduleName,
                                                                     const std::string& layoutID) = 0;
    virtual std::optional<Picklist> getPicklistMetadataByFieldID(const std::string& fieldID) = 0;
    virtual std::optional<Picklist> getPicklistMetadataByCrmColumnList(
        const std::string& moduleName, const std::vector<std::string>& crmColumnList) = 0;
};

}  // namespace tarvo
