#include "tarvobase/init_process/steps/InitCurrencyDM.h"

#include "tarvobase/init_process/parsers/TaxCurrencyParser.h"
#include "tarvobase/metadata/Stores.h"

namespace tarvo {

InitCurrencyDM::InitCurrencyDM(UserDefaultsUtil userDefaultsUtil,
                               std::shared_ptr<CurrencyMetadataPersistanceDelegate> currencyDAO, Scope scope,
                               std::shared_ptr<InitGetCurrencyNSP> networkService)
    : FlaggedStep(std::move(userDefaultsUtil), std::move(scope)),
      currencyDAO_(std::move(currencyDAO)),
      networkService_(std::move(networkService)) {}

std::shared_ptr<InitCurrencyDM> InitCurrencyDM::make(const std::shared_ptr<DatabaseAdapter>& adapter,
                                                     std::shared_ptr<UserDefaultsProtocol> userDefaults,
                                                     std::shared_ptr<InitGetCurrencyNSP> networkService) {
    auto stores = Stores::over(adapter, userDefaults);
    return std::make_shared<InitCurrencyDM>(stores.userDefaultsUtil(), stores.currencies(), stores.scope,
                                            std::move(networkService));
}

void InitCurrencyDM::request(NetworkCompletion answered) { networkService_->getCurrencyMetadata(std::move(answered)); }

Result<bool, ParserError> InitCurrencyDM::store(const Data& body) {
    auto parsed = TaxCurrencyParser::parse(body);
    if (!parsed) return parsed.error();
    return commit([&] { currencyDAO_->replaceAllCurrencyMetadata(parsed->currency); });
}

}  // namespace tarvo
