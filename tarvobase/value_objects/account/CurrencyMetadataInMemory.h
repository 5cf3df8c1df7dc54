#pragma once

#include "tarvobase/storage/InMemoryPersistanceClass.h"
#include "tarvobase/value_objects/account/CurrencyMetadataPersistanceDelegate.h"

namespace tarvo {

/// Keeps currencies in memory, in front of the table of currencies. Without a primary store a miss is `noData`.
class CurrencyMetadataInMemory final : public InMemoryPersistanceClass, public CurrencyMetadataPersistanceDelegate {
public:
    explicit CurrencyMetadataInMemory(std::shared_ptr<InMemoryDatabaseAdapter> inMemoryPersistanceClass,
                                      std::shared_ptr<CurrencyMetadataPersistanceDelegate> primaryPersistance = nullptr,
                                      CurrencyMetadataConstants currencyMetadataConstants = {});

    const CurrencyMetadataConstants currencyMetadataConstants;
    const std::shared_ptr<CurrencyMetadataPersistanceDelegate> primaryPersistance;

    bool storeCurrenctMetadata(const std::vector<CurrencyMetadata>& currencies) override;
    bool removeAllCurrencyMetadata() override;
    bool replaceAllCurrencyMetadata(const std::vector<CurrencyMetadata>& currencies) override;
    Currencies getAllCurrencyMetadata() override;
    Result<CurrencyMetadata, ParserError> getCurrencyMetadata(const std::string& for_) override;
    Result<CurrencyMetadata, ParserError> getDefaultCurrencyMetadata() override;

private:
    InMemoryTable<CurrencyMetadata> memory_;
};

}  // namespace tarvo
