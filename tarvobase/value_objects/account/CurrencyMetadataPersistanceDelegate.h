#pragma once

#include <string>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/value_objects/account/CurrencyMetadata.h"

namespace tarvo {

/// The store of currencies. Reads fail with `ParserError::noData` when there is no such currency or the store cannot be
/// read. A list may be empty. Writes return whether they were stored. Any thread may use it.
class CurrencyMetadataPersistanceDelegate : public virtual platform::Object {
public:
    using Currencies = Result<std::vector<CurrencyMetadata>, ParserError>;

    virtual bool storeCurrenctMetadata(const std::vector<CurrencyMetadata>& currencies) = 0;
    virtual bool removeAllCurrencyMetadata() = 0;
    /// Removes all currencies and stores the new ones as one change: no reader sees a state between, and a failure
    /// leaves the store as it was.
    virtual bool replaceAllCurrencyMetadata(const std::vector<CurrencyMetadata>& currencies) = 0;
    /// Returns the currencies in the order of the store.
    virtual Currencies getAllCurrencyMetadata() = 0;
    virtual Result<CurrencyMetadata, ParserError> getCurrencyMetadata(const std::string& for_) = 0;
    /// Returns the base currency.
    virtual Result<CurrencyMetadata, ParserError> getDefaultCurrencyMetadata() = 0;
};

}  // namespace tarvo
