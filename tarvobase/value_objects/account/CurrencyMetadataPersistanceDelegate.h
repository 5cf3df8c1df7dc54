#pragma once

#include <string>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/value_objects/account/CurrencyMetadata.h"

namespace tarvo {

/// The store of currencies. Reads fail with `ParserError::noData` when there is no such currency, or no answer at all;
/// a list may be empty. From any thread.
class CurrencyMetadataPersistanceDelegate : public virtual platform::Object {
public:
    using Currencies = Result<std::vector<CurrencyMetadata>, ParserError>;

    virtual void storeCurrenctMetadata(const std::vector<CurrencyMetadata>& currencies) = 0;
    virtual void removeAllCurrencyMetadata() = 0;
    /// Both as one change: nobody sees the store between, and a failure leaves it as it was.
    virtual void replaceAllCurrencyMetadata(const std::vector<CurrencyMetadata>& currencies) = 0;
    /// In the order of the store.
    virtual Currencies getAllCurrencyMetadata() = 0;
    virtual Result<CurrencyMetadata, ParserError> getCurrencyMetadata(const std::string& for_) = 0;
    /// The base currency.
    virtual Result<CurrencyMetadata, ParserError> getDefaultCurrencyMetadata() = 0;
};

}  // namespace tarvo
