#pragma once

#include <memory>

#include "tarvobase/value_objects/field/FieldMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/module/ModuleRelatedListPersistanceDelegate.h"

namespace tarvo {

class Stores;

class PopulateRelatedModulesDMP : public virtual platform::Object {
public:
    virtual void populateLookupColumn() = 0;
};

/// Sets for each related list the column of its module that points to the parent. The server does not send that column,
/// so it is derived from the stored lookup fields. Runs after a download of metadata. Blocks until it is done; may be
/// called from any thread. Does nothing without a database or without lookup fields.
class PopulateRelatedModulesDM final : public PopulateRelatedModulesDMP {
public:
    static std::shared_ptr<PopulateRelatedModulesDM> make(const Stores& stores);
    PopulateRelatedModulesDM(std::shared_ptr<ModuleRelatedListPersistanceDelegate> relatedListDAO,
                             std::shared_ptr<FieldMetadataPersistanceDelegate> fieldDAO)
        : relatedListDAO_(std::move(relatedListDAO)), fieldDAO_(std::move(fieldDAO)) {}

    void populateLookupColumn() override;

private:
    const std::shared_ptr<ModuleRelatedListPersistanceDelegate> relatedListDAO_;
    const std::shared_ptr<FieldMetadataPersistanceDelegate> fieldDAO_;
};

using PopulateRelatedModulesDataManager = PopulateRelatedModulesDM;

}  // namespace tarvo
