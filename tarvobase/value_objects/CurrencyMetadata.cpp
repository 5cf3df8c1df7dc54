#include "tarvobase/value_objects/CurrencyMetadata.h"

namespace tarvo {

namespace {

using C = CurrencyMetadata;
using CurrencyNames = CurrencyMetadataConstants;

const auto currencyForm = form<C, CurrencyNames>(
    required(member(&C::orderNo, &CurrencyNames::OrderNo)),
    required(member(&C::exchangeRate, &CurrencyNames::ExchangeRate)),
    member(&C::thousandSeperator, &CurrencyNames::ThousandSeperator), member(&C::isBase, &CurrencyNames::IsBase),
    member(&C::isoCode, &CurrencyNames::IsoCode), member(&C::currencyId, &CurrencyNames::CurrencyId),
    member(&C::isPrefixSymbol, &CurrencyNames::IsPrefixSymbol),
    member(&C::currencySymbol, &CurrencyNames::CurrencySymbol), member(&C::isActive, &CurrencyNames::IsActive),
    required(member(&C::decimalPlaces, &CurrencyNames::DecimalPlaces)),
    member(&C::currencyName, &CurrencyNames::CurrencyName),
    member(&C::decimalSeperator, &CurrencyNames::DecimalSeperator));

}  // namespace

ValueMap CurrencyMetadataDatabaseConstants::getDictionary(const CurrencyMetadata& currency) const {
    return currencyForm.toMap(currency, *this, Form::table);
}
CurrencyMetadata CurrencyMetadataDatabaseConstants::getCurrencyMetadata(const Row& row) const {
    return currencyForm.read(row, *this, Form::table);
}
Result<CurrencyMetadata, std::string> CurrencyMetadataDatabaseConstants::getCurrencyMetadataStrictly(
    const ValueMap& row) const {
    return currencyForm.readRequired(row, *this, Form::table);
}

InMemoryPropertyValue propertyForKey(const CurrencyMetadata& currency, std::string_view key) {
    return propertyOf(currencyForm, currency, key, CurrencyMetadataConstants());
}

}  // namespace tarvo
