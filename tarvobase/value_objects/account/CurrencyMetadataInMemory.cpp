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

bool CurrencyMetadataInMemory::storeCurrenctMetadata(const std::vector<CurrencyMetadata>& currencies) {
    return memory_.store(currencies,
                         [&] { return !primaryPersistance || primaryPersistance->storeCurrenctMetadata(currencies); });
}

bool CurrencyMetadataInMemory::removeAllCurrencyMetadata() {
    return memory_.replaceAll({},
                              [&] { return !primaryPersistance || primaryPersistance->removeAllCurrencyMetadata(); });
}

bool CurrencyMetadataInMemory::replaceAllCurrencyMetadata(const std::vector<CurrencyMetadata>& currencies) {
    return memory_.replaceAll(
        currencies, [&] { return !primaryPersistance || primaryPersistance->replaceAllCurrencyMetadata(currencies); });
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
