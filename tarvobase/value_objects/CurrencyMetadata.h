#pragma once

#include <string>

#include "tarvobase/usecase/Describe.h"
#include "tarvobase/value_objects/InMemoryDatabaseAdapter.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

/// A currency of the organisation and how its amounts are written.
struct CurrencyMetadata {
    int orderNo = 0;
    double exchangeRate = 0;  ///< of the base currency; an amount divided by it is one of the base currency
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

    static constexpr auto fields() {
        using C = CurrencyMetadata;
        return describe(field("orderNo", &C::orderNo), field("exchangeRate", &C::exchangeRate),
                        field("thousandSeperator", &C::thousandSeperator), field("isBase", &C::isBase),
                        field("isoCode", &C::isoCode), field("currencyId", &C::currencyId),
                        field("isPrefixSymbol", &C::isPrefixSymbol), field("currencySymbol", &C::currencySymbol),
                        field("isActive", &C::isActive), field("decimalPlaces", &C::decimalPlaces),
                        field("currencyName", &C::currencyName), field("decimalSeperator", &C::decimalSeperator));
    }
    friend bool operator==(const CurrencyMetadata&, const CurrencyMetadata&) = default;
};

struct CurrencyMetadataConstants {
    std::string_view TableName = "CurrencyMetadata";
    std::string_view OrderNo = "orderNo";
    std::string_view ExchangeRate = "exchangeRate";
    std::string_view ThousandSeperator = "thousandSeperator";
    std::string_view IsBase = "isBase";
    std::string_view IsoCode = "isoCode";
    std::string_view CurrencyId = "currencyId";
    std::string_view IsPrefixSymbol = "isPrefixSymbol";
    std::string_view CurrencySymbol = "currencySymbol";
    std::string_view IsActive = "isActive";
    std::string_view DecimalPlaces = "decimalPlaces";
    std::string_view CurrencyName = "currencyName";
    std::string_view DecimalSeperator = "decimalSeperator";
};

struct CurrencyMetadataDatabaseConstants : CurrencyMetadataConstants {
    constexpr CurrencyMetadataDatabaseConstants() {
        TableName = " CURRENCY_METADATA";
        OrderNo = "order_no";
        ExchangeRate = "exchange_rate";
        ThousandSeperator = "thousand_seperator";
        IsBase = "is_base";
        IsoCode = "iso_code";
        CurrencyId = "currency_id";
        IsPrefixSymbol = "is_prefix_symbol";
        CurrencySymbol = "currency_symbol";
        IsActive = "is_active";
        DecimalPlaces = "decimal_places";
        CurrencyName = "currency_name";
        DecimalSeperator = "decimal_seperator";
    }
    ValueMap getDictionary(const CurrencyMetadata& currency) const;
    CurrencyMetadata getCurrencyMetadata(const Row& row) const;
    /// Fails with the column of the first number that is absent or none: with a wrong rate every amount is wrong.
    Result<CurrencyMetadata, std::string> getCurrencyMetadataStrictly(const ValueMap& row) const;
};

/// A member by its plain key, for filters in memory.
InMemoryPropertyValue propertyForKey(const CurrencyMetadata& currency, std::string_view key);

}  // namespace tarvo
