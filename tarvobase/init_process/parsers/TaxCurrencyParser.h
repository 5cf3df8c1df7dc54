#pragma once

#include <string>
#include <vector>

#include "platform/Data.h"
#include "tarvobase/network_layer/OldResponse.h"
#include "tarvobase/value_objects/account/CurrencyMetadata.h"

namespace tarvo {

/// The two parts of the call. Taxes are read and nowhere stored; an organisation without them has its currencies all
/// the same.
struct TaxCurrencyResult {
    Result<std::vector<std::vector<std::string>>, OldResultError> tax;
    std::vector<CurrencyMetadata> currency;
};

struct TaxCurrencyParser {
    /// Fails when the currencies cannot be read, or were refused (`responseError`).
    static Result<TaxCurrencyResult, ParserError> parse(const platform::Data& data);
};

struct CurrencyParser {
    /// All rows or none: `lessNumberOfKeys` for a row that is too short, `typeConversionFailedForKey` with the column
    /// of a number that is none.
    static Result<std::vector<CurrencyMetadata>, ParserError> parse(const ValueList& rows);
};

}  // namespace tarvo
