#include "tarvobase/value_objects/PicklistMetadata.h"

#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

template struct StoredNames<PicklistMetadataConstants, PicklistMetadata, Result<PicklistMetadata, std::string>>;

}  // namespace tarvo
