#include "tarvobase/value_objects/field/PicklistMetadata.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

template struct StoredNames<PicklistMetadataConstants, PicklistMetadata, Result<PicklistMetadata, std::string>>;

}  // namespace tarvo
