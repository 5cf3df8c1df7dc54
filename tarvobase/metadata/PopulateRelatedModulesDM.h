#pragma once

#include <memory>

#include "tarvobase/value_objects/field/FieldMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/module/ModuleRelatedListPersistanceDelegate.h"

namespace tarvo {

class DatabaseAdapter;
class Stores;

class PopulateRelatedModulesDMP : public virtual platform::Object {
public:
    /// Returns false if the database did not store the columns.
    virtual bool populateLookupColumn() = 0;
};

/// Sets for each related list the column of its module that points to the parent. The server does not send that column,
/// so it is derived from the stored lookup fields. Runs with a download of metadata, in one commit. Blocks until it is
/// done; may be called from any thread. Stores nothing without lookup fields, and fails without a database.
class PopulateRelatedModulesDM final : public PopulateRelatedModulesDMP {
public:
    static std::shared_ptr<PopulateRelatedModulesDM> make(const Stores& stores);
    PopulateRelatedModulesDM(std::shared_ptr<ModuleRelatedListPersistanceDelegate> relatedListDAO,
                             std::shared_ptr<FieldMetadataPersistanceDelegate> fieldDAO,
                             std::shared_ptr<DatabaseAdapter> databaseAdapter)
        : relatedListDAO_(std::move(relatedListDAO)),
          fieldDAO_(std::move(fieldDAO)),
          databaseAdapter_(std::move(databaseAdapter)) {}

    bool populateLookupColumn() override;

private:
    const std::shared_ptr<ModuleRelatedListPersistanceDelegate> relatedListDAO_;
    const std::shared_ptr<FieldMetadataPersistanceDelegate> fieldDAO_;
    const std::shared_ptr<DatabaseAdapter> databaseAdapter_;
};

using PopulateRelatedModulesDataManager = PopulateRelatedModulesDM;

}  // namespace tarvo
