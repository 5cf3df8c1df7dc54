#include "tarvobase/init_process/TaxCurrencyParser.h"

#include <array>

#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

namespace {

using CurrencyColumns = CurrencyMetadataDatabaseConstants;
constexpr CurrencyColumns currencyColumns;

/// The columns in the order of a row. The server writes numbers and flags as texts, as its tables do.
constexpr std::array positions = {
    currencyColumns.OrderNo,        currencyColumns.ExchangeRate,   currencyColumns.ThousandSeperator,
    currencyColumns.IsBase,         currencyColumns.IsoCode,        currencyColumns.CurrencyId,
    currencyColumns.IsPrefixSymbol, currencyColumns.CurrencySymbol, currencyColumns.IsActive,
    currencyColumns.DecimalPlaces,  currencyColumns.CurrencyName,   currencyColumns.DecimalSeperator};

Result<CurrencyMetadata, ParserError> currencyOf(const Value& entry) {
    auto row = entry.asList();
    if (!row || row->size() < positions.size()) return ParserError(ParserError::Case::lessNumberOfKeys);
    ValueMap columns;
    for (std::size_t place = 0; place < positions.size(); ++place) columns.set(positions[place], (*row)[place]);
    auto currency = currencyColumns.getCurrencyMetadataStrictly(columns);
    if (!currency) return ParserError::typeConversionFailedForKey(currency.error());
    return *std::move(currency);
}

Result<std::vector<std::vector<std::string>>, OldResultError> taxesOf(const OldResponsePart& part) {
    if (!part.result) return part.result.error();
    std::vector<std::vector<std::string>> rows;
    for (auto& entry : *part.result) {
        auto texts = MemberCodec<std::vector<std::string>>::read(entry, Form::plain);
        if (!texts) return OldResultError();
        rows.push_back(*std::move(texts));
    }
    return rows;
}

}  // namespace

Result<TaxCurrencyResult, ParserError> TaxCurrencyParser::parse(const platform::Data& data) {
    auto parts = parseOldResponse(data);
    if (!parts) return parts.error();
    if (parts->size() < 2) return ParserError(ParserError::Case::lessNumberOfKeys);
    auto& currencyPart = (*parts)[1].result;
    if (!currencyPart) {
        bool refused = currencyPart.error().which == OldResultError::Case::serverError;
        return refused ? ParserError::responseError(std::nullopt) : ParserError(ParserError::Case::noData);
    }
    auto currencies = CurrencyParser::parse(*currencyPart);
    if (!currencies) return currencies.error();
    return TaxCurrencyResult{taxesOf(parts->front()), *std::move(currencies)};
}

Result<std::vector<CurrencyMetadata>, ParserError> CurrencyParser::parse(const ValueList& rows) {
    std::vector<CurrencyMetadata> currencies;
    for (auto& entry : rows) {
        auto currency = currencyOf(entry);
        if (!currency) return currency.error();
        currencies.push_back(*std::move(currency));
    }
    return currencies;
}

}  // namespace tarvo
