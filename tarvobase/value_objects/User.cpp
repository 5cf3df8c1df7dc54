#include "tarvobase/value_objects/User.h"

#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

template struct StoredNames<UserConstants, User>;

}  // namespace tarvo
