#pragma once

#include <string>

#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

struct CurrencyMetadata;

struct CurrencyMetadataConstants : StoredNames<CurrencyMetadataConstants, CurrencyMetadata> {
    std::string_view TableName = of("CurrencyMetadata", " CURRENCY_METADATA");
    std::string_view OrderNo = of("orderNo", "order_no");
    std::string_view ExchangeRate = of("exchangeRate", "exchange_rate");
    std::string_view ThousandSeperator = of("thousandSeperator", "thousand_seperator");
    std::string_view IsBase = of("isBase", "is_base");
    std::string_view IsoCode = of("isoCode", "iso_code");
    std::string_view CurrencyId = of("currencyId", "currency_id");
    std::string_view IsPrefixSymbol = of("isPrefixSymbol", "is_prefix_symbol");
    std::string_view CurrencySymbol = of("currencySymbol", "currency_symbol");
    std::string_view IsActive = of("isActive", "is_active");
    std::string_view DecimalPlaces = of("decimalPlaces", "decimal_places");
    std::string_view CurrencyName = of("currencyName", "currency_name");
    std::string_view DecimalSeperator = of("decimalSeperator", "decimal_seperator");
};
struct CurrencyMetadataDatabaseConstants : TableTwin<CurrencyMetadataConstants> {};

/// A currency of the organisation and how its amounts are written.
struct CurrencyMetadata {
    int orderNo = 0;
    double exchangeRate = 0;  ///< an amount divided by it is the amount in the base currency
    std::string thousandSeperator;
    bool isBase = false;
    std::string isoCode;
    std::string currencyId;
    bool isPrefixSymbol = false;
    std::string currencySymbol;
    bool isActive = false;
    int decimalPlaces = 0;
    std::string currencyName;
    std::string decimalSeperator;

    using InMemoryKeys = CurrencyMetadataConstants;
    static constexpr auto fields() {
        using V = CurrencyMetadata;
        using Names = CurrencyMetadataConstants;
        return describe(field("orderNo", &V::orderNo, &Names::OrderNo),
                        field("exchangeRate", &V::exchangeRate, &Names::ExchangeRate),
                        field("thousandSeperator", &V::thousandSeperator, &Names::ThousandSeperator),
                        field("isBase", &V::isBase, &Names::IsBase), field("isoCode", &V::isoCode, &Names::IsoCode),
                        field("currencyId", &V::currencyId, &Names::CurrencyId),
                        field("isPrefixSymbol", &V::isPrefixSymbol, &Names::IsPrefixSymbol),
                        field("currencySymbol", &V::currencySymbol, &Names::CurrencySymbol),
                        field("isActive", &V::isActive, &Names::IsActive),
                        field("decimalPlaces", &V::decimalPlaces, &Names::DecimalPlaces),
                        field("currencyName", &V::currencyName, &Names::CurrencyName),
                        field("decimalSeperator", &V::decimalSeperator, &Names::DecimalSeperator));
    }
    friend bool operator==(const CurrencyMetadata&, const CurrencyMetadata&) = default;
};

}  // namespace tarvo
