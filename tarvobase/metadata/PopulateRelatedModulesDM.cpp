#include "tarvobase/metadata/PopulateRelatedModulesDM.h"

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

/// The target of a lookup that may point to records of several modules.
constexpr std::string_view anyModule = "se_module";

}  // namespace

std::shared_ptr<PopulateRelatedModulesDM> PopulateRelatedModulesDM::make(const Stores& stores) {
    return std::make_shared<PopulateRelatedModulesDM>(stores.relatedLists(), stores.fields(), stores.databaseAdapter());
}

bool PopulateRelatedModulesDM::populateLookupColumn() {
    if (!databaseAdapter_) return false;
    auto naming = namingInForce();
    auto lookups = fieldDAO_->getFieldMetadata(FieldDataType::lookup);
    if (!lookups || lookups->empty()) return true;
    return databaseAdapter_->tolerantTransaction("lookup columns", [&] {
        for (auto& field : *lookups)
            if (field.lookupModule == anyModule)
                relatedListDAO_->setLookupColumnByRelatedModuleName(field.moduleName, field.fieldIdentifier(naming));
        // Attachments have such a column, but no field of the module describes it.
        relatedListDAO_->setLookupColumnByRelatedModuleName("Attachments", std::string(naming.constant->seid));
        for (auto& field : *lookups)
            if (!field.relatedListID.empty())
                relatedListDAO_->setLookupColumnByRealtedListID(field.relatedListID, field.fieldIdentifier(naming));
        return true;
    });
}

}  // namespace tarvo
