#include "tarvobase/value_objects/FieldMetadata.h"

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/value_objects/IdentifierConstants.h"

namespace tarvo {

const std::string& FieldMetadata::fieldIdentifier() const {
    return fieldIdentifier(CommonConfigration::sharedInstance().fieldIdentifier.get());
}

}  // namespace tarvo
