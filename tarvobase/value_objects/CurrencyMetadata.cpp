#include "tarvobase/value_objects/CurrencyMetadata.h"

namespace tarvo {

namespace {

using C = CurrencyMetadata;
using Names = CurrencyMetadataConstants;

const auto currencyForm = form<C, Names>(
    required(member(&C::orderNo, &Names::OrderNo)), required(member(&C::exchangeRate, &Names::ExchangeRate)),
    member(&C::thousandSeperator, &Names::ThousandSeperator), member(&C::isBase, &Names::IsBase),
    member(&C::isoCode, &Names::IsoCode), member(&C::currencyId, &Names::CurrencyId),
    member(&C::isPrefixSymbol, &Names::IsPrefixSymbol), member(&C::currencySymbol, &Names::CurrencySymbol),
    member(&C::isActive, &Names::IsActive), required(member(&C::decimalPlaces, &Names::DecimalPlaces)),
    member(&C::currencyName, &Names::CurrencyName), member(&C::decimalSeperator, &Names::DecimalSeperator));

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
