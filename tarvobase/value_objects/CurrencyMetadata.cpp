#include "tarvobase/value_objects/CurrencyMetadata.h"

#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

template struct StoredNames<CurrencyMetadataConstants, CurrencyMetadata>;

}  // namespace tarvo
