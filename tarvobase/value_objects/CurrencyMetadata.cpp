#include "tarvobase/value_objects/CurrencyMetadata.h"

#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

template struct StoredNames<CurrencyMetadataConstants, CurrencyMetadata>;

Result<CurrencyMetadata, std::string> CurrencyMetadataDatabaseConstants::getCurrencyMetadataStrictly(
    const ValueMap& row) const {
    return StoredForm<CurrencyMetadata>::readRequired(row, *this);
}

}  // namespace tarvo
