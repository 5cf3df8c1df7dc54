#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/value_objects/field/FieldColumnName.h"
#include "tarvobase/value_objects/field/FieldMetadata.h"
#include "tarvobase/value_objects/field/MetadataError.h"
#include "tarvobase/value_objects/naming/ModuleIdentifier.h"

namespace tarvo {

/// The store of fields. Unless an order is given, lists are in the order in which the fields were stored, which is the
/// server's. A read that finds nothing fails with `MetadataError::notFound` if its type has a failure and is an empty
/// list otherwise. If the store cannot be read, the result is nullopt. A damaged row is left out. Writes return whether
/// they were stored. Any thread may use it.
class FieldMetadataPersistanceDelegate : public virtual platform::Object {
public:
    using Fields = std::vector<FieldMetadata>;

    /// Returns the fields of a module that have these identifiers (in the naming in force), or all of them without a
    /// list.
    virtual Result<Fields, MetadataError> getFieldMetadata(
        const std::string& moduleName, const std::optional<std::vector<std::string>>& fieldIdentifiers,
        const std::vector<FieldSort>& sort) = 0;
    /// Returns the fields by module name, with one query. A module without fields has no entry.
    virtual Result<std::unordered_map<std::string, Fields>, MetadataError> getFieldMetadataByModuleNames(
        const std::vector<std::string>& moduleNames, const std::vector<FieldSort>& sort) = 0;
    virtual bool storeFieldMetadata(const FieldMetadata& fieldMetadata) = 0;
    virtual bool storeFieldMetadata(const std::vector<FieldMetadata>& fieldMetadata) = 0;
    std::optional<Fields> getFieldMetadata(const ModuleIdentifier& moduleIdentifier) {
        return getFieldMetadata(moduleIdentifier.rawValue());
    }
    virtual std::optional<Fields> getFieldMetadata(const std::string& moduleName) = 0;
    /// Returns the fields of all these modules in one list.
    virtual std::optional<Fields> getFieldMetadataByModuleNames(const std::vector<std::string>& moduleNames) = 0;
    /// Returns nullopt if there is no such field.
    virtual std::optional<FieldMetadata> getFieldMetadataByCrmColumnName(const std::string& moduleName,
                                                                         const std::string& crmColumnName) = 0;
    virtual std::optional<FieldMetadata> getFieldMetadataByFieldAPIName(const std::string& moduleName,
                                                                        const std::string& fieldAPIName) = 0;
    /// Returns the fields of this type of all modules.
    virtual std::optional<Fields> getFieldMetadata(FieldDataType metadataType) = 0;
    virtual std::optional<Fields> getFieldMetadataByCrmColumnList(const std::string& moduleName,
                                                                  const std::vector<std::string>& crmColumnList) = 0;
    /// Returns the fields that a list of the module may be sorted by, ordered by label.
    virtual std::optional<Fields> getSortFieldList(const std::string& moduleName) = 0;
};

}  // namespace tarvo
