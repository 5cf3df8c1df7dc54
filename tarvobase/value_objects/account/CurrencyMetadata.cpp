#include "tarvobase/value_objects/account/CurrencyMetadata.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

template struct StoredNames<CurrencyMetadataConstants, CurrencyMetadata>;

}  // namespace tarvo
