#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/value_objects/field/FieldList.h"
#include "tarvobase/value_objects/field/FieldMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/field/PicklistMetadataPersistanceDelegate.h"

namespace tarvo {

class DatabaseAdapter;

/// Reads the fields of modules with their picklists from the local database. Fails with `MetadataError::notFound` for a
/// module without fields, or if the database cannot be read. Blocks its caller; may be called from any thread.
class GetFieldListDM final : public platform::Object {
public:
    using FieldListResult = Result<FieldList, MetadataError>;
    using FieldListsByModule = std::map<std::string, FieldListResult>;

    GetFieldListDM(std::shared_ptr<PicklistMetadataPersistanceDelegate> pickListPersistence,
                   std::shared_ptr<FieldMetadataPersistanceDelegate> fieldPersistence)
        : pickListPersistence(std::move(pickListPersistence)), fieldPersistence(std::move(fieldPersistence)) {}

    const std::shared_ptr<PicklistMetadataPersistanceDelegate> pickListPersistence;
    const std::shared_ptr<FieldMetadataPersistanceDelegate> fieldPersistence;

    /// Returns the fields of a module: those in `columnList` (identifiers of the naming in force), or all if it is
    /// absent. They come in the order of `sortList`, or in the server's order if it is empty.
    FieldListResult getFields(const std::string& moduleName, const std::optional<std::vector<std::string>>& columnList,
                              const std::vector<FieldSort>& sortList = {}) const;
    FieldListResult getFields(const ModuleIdentifier& module, const std::optional<std::vector<std::string>>& columnList,
                              const std::vector<FieldSort>& sortList = {}) const {
        return getFields(module.rawValue(), columnList, sortList);
    }
    /// Returns the fields of a module without their picklists, which the values of records do not need: those in
    /// `columnList` and perhaps others, or all if it is absent or names none.
    FieldListResult getFieldsWithoutPicklists(const std::string& moduleName,
                                              const std::optional<std::vector<std::string>>& columnList) const;
    FieldListResult getFieldList(const std::string& moduleName, const std::vector<std::string>& crmColumnList) const {
        return getFields(moduleName, crmColumnList);
    }
    /// Returns all fields of many modules, one entry per name. Takes one query for the fields and one for the
    /// picklists.
    FieldListsByModule getFields(const std::vector<std::string>& moduleNames,
                                 const std::vector<FieldSort>& sort = {}) const;
};

/// While it lives, its thread reads the fields of a module without picklists once, or once for some columns and once
/// for all. It serves transactions that change records of one database and need the fields several times: nothing else
/// can store fields meanwhile. An inner one uses what the outermost keeps.
class FieldListMemory {
public:
    FieldListMemory();
    ~FieldListMemory();
    FieldListMemory(const FieldListMemory&) = delete;
    FieldListMemory& operator=(const FieldListMemory&) = delete;
};

/// Builds a `GetFieldListDM` over the tables of an adapter.
struct FieldListAssembler {
    static std::shared_ptr<GetFieldListDM> getFieldListDM(std::shared_ptr<DatabaseAdapter> databaseAdapter);
};

}  // namespace tarvo
