#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/value_objects/layout/LayoutFieldColumnName.h"
#include "tarvobase/value_objects/layout/LayoutMetadata.h"
#include "tarvobase/value_objects/layout/ModuleLayoutInfo.h"

namespace tarvo {

/// The field lists of modules, by module name.
using ModuleFieldsMap = std::unordered_map<std::string, FieldList>;

/// The store of layouts. Each row is returned joined with its field; a row whose field is not in the given list is left
/// out. Lists are empty if nothing is found and nullopt if the store cannot be read. Unless an order is given, they are
/// in the order of the store. Writes return whether they were stored. Any thread may use it.
class LayoutMetadataPersistanceDelegate : public virtual platform::Object {
public:
    using LayoutFields = std::vector<LayoutMetadata>;
    using LayoutFieldsByName = std::unordered_map<std::string, LayoutFields>;

    virtual bool storeLayoutMetadata(const std::vector<LayoutFieldData>& places) = 0;
    virtual bool storeLayoutMetadata(const LayoutMetadata& layoutMetadata) = 0;
    virtual bool storeLayoutMetadata(const std::vector<LayoutMetadata>& layoutMetadata) = 0;
    std::optional<LayoutFields> getLayoutMetadata(const std::string& moduleName, const FieldList& fieldList) {
        return getLayoutMetadata(moduleName, fieldList, {});
    }
    virtual std::optional<LayoutFields> getLayoutMetadata(const std::string& moduleName, const FieldList& fieldList,
                                                          const std::vector<LayoutSort>& sortBy) = 0;
    /// Returns the fields of all modules of the map by module name, with one query. A module without rows has no entry.
    virtual std::optional<LayoutFieldsByName> getLayoutMetadata(const ModuleFieldsMap& moduleFieldsMap,
                                                                const std::vector<LayoutSort>& sortBy) = 0;
    /// Returns the fields of these layouts of one module in one list.
    virtual std::optional<LayoutFields> getLayoutMetadata(const std::vector<ModuleLayoutInfo>& layouts,
                                                          const FieldList& fieldList) = 0;
    /// Returns the fields of these layouts by layout id. A layout whose module is not in the map is logged and left
    /// out.
    virtual std::optional<LayoutFieldsByName> getLayoutMetadatas(const std::vector<std::string>& layoutIds,
                                                                 const ModuleFieldsMap& moduleFieldsMap) = 0;
    /// Returns nullopt if the layout is unknown.
    virtual std::optional<std::string> getModuleName(const std::string& forLayoutId) = 0;
    /// Returns the module names by layout id. An unknown layout has no entry.
    virtual std::optional<std::unordered_map<std::string, std::string>> getModuleNames(
        const std::vector<std::string>& layoutIds) = 0;
};

}  // namespace tarvo
