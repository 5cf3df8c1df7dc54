#include "tarvobase/value_objects/account/UserDetails.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

template struct StoredNames<UserDetailsConstants, UserDetails>;

}  // namespace tarvo
