#include "tarvobase/value_objects/UserDetails.h"

#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

template struct StoredNames<UserDetailsConstants, UserDetails>;

}  // namespace tarvo
