#include "tarvobase/value_objects/layout/ModuleLayoutInfo.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

template struct StoredNames<ModuleLayoutInfoConstants, ModuleLayoutInfo>;

}  // namespace tarvo
