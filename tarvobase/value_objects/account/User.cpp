#include "tarvobase/value_objects/account/User.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

template struct StoredNames<UserConstants, User>;

}  // namespace tarvo
