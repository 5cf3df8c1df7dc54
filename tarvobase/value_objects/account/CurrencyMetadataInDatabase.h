#pragma once

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/account/CurrencyMetadataPersistanceDelegate.h"

namespace tarvo {

/// The table of currencies.
class CurrencyMetadataInDatabase final : public DatabasePersistanceClass, public CurrencyMetadataPersistanceDelegate {
public:
    /// Blanks before the name are ignored.
    CurrencyMetadataInDatabase(const std::string& tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter,
                               CurrencyMetadataDatabaseConstants databaseConstants = {});

    bool storeCurrenctMetadata(const std::vector<CurrencyMetadata>& currencies) override;
    bool removeAllCurrencyMetadata() override { return table().deleteAll(); }
    bool replaceAllCurrencyMetadata(const std::vector<CurrencyMetadata>& currencies) override;
    Currencies getAllCurrencyMetadata() override;
    Result<CurrencyMetadata, ParserError> getCurrencyMetadata(const std::string& for_) override;
    Result<CurrencyMetadata, ParserError> getDefaultCurrencyMetadata() override;

private:
    Result<CurrencyMetadata, ParserError> firstWhere(std::string_view column, const std::string& value) const;
    std::optional<std::vector<CurrencyMetadata>> currenciesOf(const std::optional<Rows>& rows) const;

    CurrencyMetadataDatabaseConstants databaseConstants_;
};

}  // namespace tarvo
