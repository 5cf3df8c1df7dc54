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
/// module without fields, or when the database gives no answer. Blocks its caller; from any thread.
class GetFieldListDM final : public platform::Object {
public:
    using FieldListResult = Result<FieldList, MetadataError>;
    using FieldListsByModule = std::map<std::string, FieldListResult>;

    GetFieldListDM(std::shared_ptr<PicklistMetadataPersistanceDelegate> pickListPersistence,
                   std::shared_ptr<FieldMetadataPersistanceDelegate> fieldPersistence)
        : pickListPersistence(std::move(pickListPersistence)), fieldPersistence(std::move(fieldPersistence)) {}

    const std::shared_ptr<PicklistMetadataPersistanceDelegate> pickListPersistence;
    const std::shared_ptr<FieldMetadataPersistanceDelegate> fieldPersistence;

    /// The fields of a module, those of `columnList` (identifiers of the naming in force) or all when it is absent. In
    /// the order asked for; without one in the server's.
    FieldListResult getFields(const std::string& moduleName, const std::optional<std::vector<std::string>>& columnList,
                              const std::vector<FieldSort>& sortList = {}) const;
    FieldListResult getFields(const ModuleIdentifier& module, const std::optional<std::vector<std::string>>& columnList,
                              const std::vector<FieldSort>& sortList = {}) const {
        return getFields(module.rawValue(), columnList, sortList);
    }
    FieldListResult getFieldList(const std::string& moduleName, const std::vector<std::string>& crmColumnList) const {
        return getFields(moduleName, crmColumnList);
    }
    /// All fields of many modules, an entry a name, in one query for the fields and one for the picklists.
    FieldListsByModule getFields(const std::vector<std::string>& moduleNames,
                                 const std::vector<FieldSort>& sort = {}) const;
};

/// Builds it over the tables of an adapter.
struct FieldListAssembler {
    static std::shared_ptr<GetFieldListDM> getFieldListDM(std::shared_ptr<DatabaseAdapter> databaseAdapter);
};

}  // namespace tarvo
