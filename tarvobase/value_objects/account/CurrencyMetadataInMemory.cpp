#include "tarvobase/value_objects/account/CurrencyMetadataInMemory.h"

namespace tarvo {

CurrencyMetadataInMemory::CurrencyMetadataInMemory(
    std::shared_ptr<InMemoryDatabaseAdapter> inMemoryPersistanceClass,
    std::shared_ptr<CurrencyMetadataPersistanceDelegate> primaryPersistance,
    CurrencyMetadataConstants currencyMetadataConstants)
    : InMemoryPersistanceClass(std::move(inMemoryPersistanceClass)),
      currencyMetadataConstants(currencyMetadataConstants),
      primaryPersistance(std::move(primaryPersistance)),
      memory_(
          *this, std::string(currencyMetadataConstants.TableName),
          [](const CurrencyMetadata& currency) { return currency.currencyId; }, this->primaryPersistance != nullptr) {}

void CurrencyMetadataInMemory::storeCurrenctMetadata(const std::vector<CurrencyMetadata>& currencies) {
    auto account = currentAccountBrenUID();
    if (primaryPersistance) primaryPersistance->storeCurrenctMetadata(currencies);
    memory_.store(account, currencies);
}

void CurrencyMetadataInMemory::removeAllCurrencyMetadata() {
    auto account = currentAccountBrenUID();
    if (primaryPersistance) primaryPersistance->removeAllCurrencyMetadata();
    memory_.replaceAll(account, {});
}

void CurrencyMetadataInMemory::replaceAllCurrencyMetadata(const std::vector<CurrencyMetadata>& currencies) {
    auto account = currentAccountBrenUID();
    if (primaryPersistance) primaryPersistance->replaceAllCurrencyMetadata(currencies);
    memory_.replaceAll(account, currencies);
}

CurrencyMetadataPersistanceDelegate::Currencies CurrencyMetadataInMemory::getAllCurrencyMetadata() {
    return memory_.allOr([&] {
        return primaryPersistance ? primaryPersistance->getAllCurrencyMetadata() : Currencies(ParserError::noData());
    });
}

Result<CurrencyMetadata, ParserError> CurrencyMetadataInMemory::getCurrencyMetadata(const std::string& for_) {
    return memory_.firstOr({{std::string(currencyMetadataConstants.IsoCode), for_}}, [&] {
        return primaryPersistance ? primaryPersistance->getCurrencyMetadata(for_)
                                  : Result<CurrencyMetadata, ParserError>(ParserError::noData());
    });
}

Result<CurrencyMetadata, ParserError> CurrencyMetadataInMemory::getDefaultCurrencyMetadata() {
    return memory_.firstOr({{std::string(currencyMetadataConstants.IsBase), true}}, [&] {
        return primaryPersistance ? primaryPersistance->getDefaultCurrencyMetadata()
                                  : Result<CurrencyMetadata, ParserError>(ParserError::noData());
    });
}

}  // namespace tarvo
