#pragma once

#include <memory>

#include "tarvobase/value_objects/field/FieldMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/module/ModuleRelatedListPersistanceDelegate.h"

namespace tarvo {

class PopulateRelatedModulesDMP : public virtual platform::Object {
public:
    virtual void populateLookupColumn() = 0;
};

/// Sets for each related list the column of its module that points to the parent. The server does not send that column,
/// so it is derived from the stored lookup fields. Runs after a download of metadata. Blocks until it is done; may be
/// called from any thread. Does nothing without a database or without lookup fields.
class PopulateRelatedModulesDM final : public PopulateRelatedModulesDMP {
public:
    /// A store that is null is made when it is needed, over the database that is open then.
    explicit PopulateRelatedModulesDM(std::shared_ptr<ModuleRelatedListPersistanceDelegate> relatedListDAO = nullptr,
                                      std::shared_ptr<FieldMetadataPersistanceDelegate> fieldDAO = nullptr)
        : relatedListDAO_(std::move(relatedListDAO)), fieldDAO_(std::move(fieldDAO)) {}

    void populateLookupColumn() override;

private:
    std::shared_ptr<ModuleRelatedListPersistanceDelegate> relatedListDAO() const;
    std::shared_ptr<FieldMetadataPersistanceDelegate> fieldDAO() const;

    const std::shared_ptr<ModuleRelatedListPersistanceDelegate> relatedListDAO_;
    const std::shared_ptr<FieldMetadataPersistanceDelegate> fieldDAO_;
};

using PopulateRelatedModulesDataManager = PopulateRelatedModulesDM;

}  // namespace tarvo
