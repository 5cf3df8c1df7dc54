#include "tarvobase/configuration/Variant.h"

#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo::variant {

bool hasModuleIDs() { return CommonConfigration::sharedInstance().isModuleIDSupported.get(); }
bool hasMoreLayoutColumns() {
    return CommonConfigration::sharedInstance().hasAdditionalInfoAndSubformKeysInLayoutMeta.get();
}
bool hasServerCriteria() { return CommonConfigration::sharedInstance().serverCVCriteria.get(); }
bool rewritesSystemProperties() { return CommonConfigration::sharedInstance().modifySystemProperties.get(); }
GetMetadataApiVersion metadataVersion() { return CommonConfigration::sharedInstance().getMetadataApiVersion.get(); }
std::string_view seModule() { return rawText(CommonConfigration::sharedInstance().seModule.get()); }
std::string_view attachments() { return rawText(CommonConfigration::sharedInstance().attachments.get()); }
std::shared_ptr<NewRecordIdGenerator> recordIDGenerator() {
    return CommonConfigration::sharedInstance().recordIDGenerator.get();
}

}  // namespace tarvo::variant
