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

/// The store of fields. Unless an order is asked for, lists come in the order in which the fields were stored, which is
/// the server's. A read that finds nothing is `MetadataError::notFound` where it has a failure, and an empty list
/// elsewhere; without an answer of the store it is absent. A damaged row is left out. From any thread.
class FieldMetadataPersistanceDelegate : public virtual platform::Object {
public:
    using Fields = std::vector<FieldMetadata>;

    /// The fields of a module with these identifiers (of the naming in force); all of them when the list is absent.
    virtual Result<Fields, MetadataError> getFieldMetadata(
        const std::string& moduleName, const std::optional<std::vector<std::string>>& fieldIdentifiers,
        const std::vector<FieldSort>& sort) = 0;
    /// By module name, in one query. A module without fields has no entry.
    virtual Result<std::unordered_map<std::string, Fields>, MetadataError> getFieldMetadataByModuleNames(
        const std::vector<std::string>& moduleNames, const std::vector<FieldSort>& sort) = 0;
    virtual void storeFieldMetadata(const FieldMetadata& fieldMetadata) = 0;
    virtual void storeFieldMetadata(const std::vector<FieldMetadata>& fieldMetadata) = 0;
    std::optional<Fields> getFieldMetadata(const ModuleIdentifier& moduleIdentifier) {
        return getFieldMetadata(moduleIdentifier.rawValue());
    }
    virtual std::optional<Fields> getFieldMetadata(const std::string& moduleName) = 0;
    /// The fields of all these modules in one list.
    virtual std::optional<Fields> getFieldMetadataByModuleNames(const std::vector<std::string>& moduleNames) = 0;
    /// Absent when there is no such field.
    virtual std::optional<FieldMetadata> getFieldMetadataByCrmColumnName(const std::string& moduleName,
                                                                         const std::string& crmColumnName) = 0;
    virtual std::optional<FieldMetadata> getFieldMetadataByFieldAPIName(const std::string& moduleName,
                                                                        const std::string& fieldAPIName) = 0;
    /// The fields of a type, of all modules.
    virtual std::optional<Fields> getFieldMetadata(FieldDataType metadataType) = 0;
    virtual std::optional<Fields> getFieldMetadataByCrmColumnList(const std::string& moduleName,
                                                                  const std::vector<std::string>& crmColumnList) = 0;
    /// The fields that a list of the module may be sorted by, in the order of their labels.
    virtual std::optional<Fields> getSortFieldList(const std::string& moduleName) = 0;
};

}  // namespace tarvo
