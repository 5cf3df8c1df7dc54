#pragma once

#include <string>
#include <vector>

namespace tarvo::sandbox {

struct CurrencyData {
    std::string id;
    std::string isoCode;
    std::string name;
    std::string symbol;
    /// How many of it the base currency buys.
    std::string exchangeRate;
    std::string thousandSeparator;
    std::string decimalSeparator;
    int decimalPlaces = 2;
    bool isBase = false;
    bool isPrefixSymbol = true;
    bool isActive = true;
};

struct TaxData {
    std::string id;
    std::string name;
    /// Percent.
    std::string rate;
};

class IdSequence;
std::vector<CurrencyData> makeCurrencies(IdSequence& ids);
std::vector<TaxData> makeTaxes(IdSequence& ids);

}  // namespace tarvo::sandbox
