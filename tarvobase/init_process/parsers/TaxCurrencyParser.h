#pragma once

#include <string>
#include <vector>

#include "platform/Data.h"
#include "tarvobase/network_layer/OldResponse.h"
#include "tarvobase/value_objects/account/CurrencyMetadata.h"

namespace tarvo {

/// The two parts of the answer. Taxes are parsed but not stored; an organisation without taxes still has currencies.
struct TaxCurrencyResult {
    Result<std::vector<std::vector<std::string>>, OldResultError> tax;
    std::vector<CurrencyMetadata> currency;
};

struct TaxCurrencyParser {
    /// Fails if the currencies cannot be read, and with `responseError` if the server refused them.
    static Result<TaxCurrencyResult, ParserError> parse(const platform::Data& data);
};

struct CurrencyParser {
    /// Returns all rows or fails: with `lessNumberOfKeys` if a row is too short, with `typeConversionFailedForKey` and
    /// the column if a number cannot be read.
    static Result<std::vector<CurrencyMetadata>, ParserError> parse(const ValueList& rows);
};

}  // namespace tarvo
