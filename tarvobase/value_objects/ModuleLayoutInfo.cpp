#include "tarvobase/value_objects/ModuleLayoutInfo.h"

#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

template struct StoredNames<ModuleLayoutInfoConstants, ModuleLayoutInfo>;

}  // namespace tarvo
