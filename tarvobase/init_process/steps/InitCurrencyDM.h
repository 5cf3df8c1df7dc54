#pragma once

#include <memory>
#include <string>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/download/FlaggedStep.h"
#include "tarvobase/init_process/steps/InitGetCurrencyNS.h"
#include "tarvobase/value_objects/account/CurrencyMetadataPersistanceDelegate.h"

namespace tarvo {

class DatabaseAdapter;

/// The step `currency`: replaces the stored currencies with those of the organisation. If the server refuses them, the
/// step fails and the stored ones stay. An empty list empties the table.
class InitCurrencyDM final : public FlaggedStep {
public:
    InitCurrencyDM(UserDefaultsUtil userDefaultsUtil, std::shared_ptr<CurrencyMetadataPersistanceDelegate> currencyDAO,
                   Scope scope, std::shared_ptr<InitGetCurrencyNSP> networkService);

    /// Makes a step over an adapter and the settings store.
    static std::shared_ptr<InitCurrencyDM> make(
        const std::shared_ptr<DatabaseAdapter>& adapter, std::shared_ptr<UserDefaultsProtocol> userDefaults,
        std::shared_ptr<InitGetCurrencyNSP> networkService = std::make_shared<InitGetCurrencyNS>());

    Process processName() const override { return Process::currency; }

protected:
    void request(NetworkCompletion answered) override;
    Result<bool, ParserError> store(const Data& body) override;

private:
    const std::shared_ptr<CurrencyMetadataPersistanceDelegate> currencyDAO_;
    const std::shared_ptr<InitGetCurrencyNSP> networkService_;
};

}  // namespace tarvo
