#include "sandbox/data/Currencies.h"

#include "sandbox/data/Generator.h"

namespace tarvo::sandbox {

// The currencies that records are kept in, and one that is no longer used.
std::vector<CurrencyData> makeCurrencies(IdSequence& ids) {
    return {
        {ids.next(), "USD", "US Dollar", "$", "1", ",", ".", 2, true, true, true},
        {ids.next(), "EUR", "Euro", "€", "0.92", ".", ",", 2, false, false, true},
        {ids.next(), "JPY", "Japanese Yen", "¥", "147.5", ",", ".", 0, false, true, true},
        {ids.next(), "CHF", "Swiss Franc", "CHF", "0.88", "'", ".", 2, false, true, false},
    };
}

std::vector<TaxData> makeTaxes(IdSequence& ids) {
    return {{ids.next(), "Sales Tax", "8.25"}, {ids.next(), "Umsatzsteuer", "19"}};
}

}  // namespace tarvo::sandbox
