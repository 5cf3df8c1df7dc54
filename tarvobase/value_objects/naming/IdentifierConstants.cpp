#include "tarvobase/value_objects/naming/IdentifierConstants.h"

#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

const IdentifierConstants& FieldIdentifierConstants() { return *namingInForce().constant; }

}  // namespace tarvo
