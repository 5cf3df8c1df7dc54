#include "tarvobase/init_process/parsers/TaxCurrencyParser.h"

#include "tarvobase/network_layer/PositionalRow.h"

namespace tarvo {

namespace {

constexpr std::size_t currencyColumnCount = 12;

ParserError notANumber(std::string_view column) { return ParserError::typeConversionFailedForKey(std::string(column)); }

Result<CurrencyMetadata, ParserError> currencyOf(const Value& entry) {
    constexpr CurrencyMetadataDatabaseConstants columns;
    auto opened = PositionalRow::open(entry, currencyColumnCount, PositionalRow::Mode::lenient);
    if (!opened) return ParserError(ParserError::Case::lessNumberOfKeys);
    auto row = *std::move(opened);
    auto orderNo = row.integer(0);
    auto exchangeRate = row.real(1);
    auto decimalPlaces = row.integer(9);
    if (!orderNo) return notANumber(columns.OrderNo);
    // A wrong rate would make every amount wrong.
    if (!exchangeRate) return notANumber(columns.ExchangeRate);
    if (!decimalPlaces) return notANumber(columns.DecimalPlaces);
    // An id, for example, may come as a number.
    auto text = [&](std::size_t column) { return row.value(column).toText().value_or(""); };
    return CurrencyMetadata{.orderNo = *orderNo,
                            .exchangeRate = *exchangeRate,
                            .thousandSeperator = text(2),
                            .isBase = row.flag(3),
                            .isoCode = text(4),
                            .currencyId = text(5),
                            .isPrefixSymbol = row.flag(6),
                            .currencySymbol = text(7),
                            .isActive = row.flag(8),
                            .decimalPlaces = *decimalPlaces,
                            .currencyName = text(10),
                            .decimalSeperator = text(11)};
}

Result<std::vector<std::vector<std::string>>, OldResultError> taxesOf(const OldResponsePart& part) {
    if (!part.result) return part.result.error();
    std::vector<std::vector<std::string>> rows;
    for (auto& entry : *part.result) {
        auto texts = readAs<std::vector<std::string>>(entry);
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
