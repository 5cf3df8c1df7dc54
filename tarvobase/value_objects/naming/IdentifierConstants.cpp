#include "tarvobase/value_objects/naming/IdentifierConstants.h"

#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

std::string_view seModuleApiName() { return rawText(CommonConfigration::sharedInstance().seModule.get()); }
std::string_view attachmentsApiName() { return rawText(CommonConfigration::sharedInstance().attachments.get()); }

const IdentifierConstants& FieldIdentifierConstants() { return *namingInForce().constant; }

}  // namespace tarvo
