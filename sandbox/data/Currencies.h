#pragma once

#include <string>
#include <vector>

namespace tarvo::sandbox {

struct CurrencyData {
    std::string id;
    std::string isoCode;
    std::string name;
    std::string symbol;
    /// How many units of it one unit of the base currency buys.
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
    /// In percent.
    std::string rate;
};

class IdSequence;
std::vector<CurrencyData> makeCurrencies(IdSequence& ids);
std::vector<TaxData> makeTaxes(IdSequence& ids);

}  // namespace tarvo::sandbox
