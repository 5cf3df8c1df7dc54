#include "tarvobase/value_objects/CompanyInfo.h"

#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

template struct StoredNames<CompanyInfoConstants, CompanyInfo>;

}  // namespace tarvo
