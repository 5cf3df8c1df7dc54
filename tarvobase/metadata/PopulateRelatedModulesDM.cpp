#include "tarvobase/metadata/PopulateRelatedModulesDM.h"

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/value_objects/field/FieldMetadataInDatabase.h"
#include "tarvobase/value_objects/module/ModuleRelatedListInDatabase.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

/// The target of a lookup that may point to records of several modules.
constexpr std::string_view anyModule = "se_module";

}  // namespace

std::shared_ptr<ModuleRelatedListPersistanceDelegate> PopulateRelatedModulesDM::relatedListDAO() const {
    return relatedListDAO_ ? relatedListDAO_ : std::make_shared<ModuleRelatedListInDatabase>();
}

std::shared_ptr<FieldMetadataPersistanceDelegate> PopulateRelatedModulesDM::fieldDAO() const {
    if (fieldDAO_) return fieldDAO_;
    FieldMetadataDatabaseConstants constants;
    return std::make_shared<FieldMetadataInDatabase>(
        std::string(constants.TableName), CommonConfigration::sharedInstance().databaseAdapter.get(), constants);
}

void PopulateRelatedModulesDM::populateLookupColumn() {
    auto naming = namingInForce();
    auto lookups = fieldDAO()->getFieldMetadata(FieldDataType::lookup);
    if (!lookups || lookups->empty()) return;
    auto lists = relatedListDAO();
    for (auto& field : *lookups)
        if (field.lookupModule == anyModule)
            lists->setLookupColumnByRelatedModuleName(field.moduleName, field.fieldIdentifier(naming));
    // Attachments have such a column, but no field of the module describes it.
    lists->setLookupColumnByRelatedModuleName("Attachments", std::string(naming.constant->seid));
    for (auto& field : *lookups)
        if (!field.relatedListID.empty())
            lists->setLookupColumnByRealtedListID(field.relatedListID, field.fieldIdentifier(naming));
}

}  // namespace tarvo
