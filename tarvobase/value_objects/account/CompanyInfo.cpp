#include "tarvobase/value_objects/account/CompanyInfo.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

template struct StoredNames<CompanyInfoConstants, CompanyInfo>;

}  // namespace tarvo
