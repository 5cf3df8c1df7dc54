#include "tarvobase/init_process/StoreOrgsUseCase.h"

#include "tarvobase/init_process/parsers/InitDownloadParser.h"
#include "tarvobase/value_objects/account/OrganisationInUserDefaults.h"

namespace tarvo {

StoreOrgsDataManager::StoreOrgsDataManager(std::shared_ptr<OrganisationPersistance> orgsPersistance,
                                           std::shared_ptr<AppInitNetworkServiceProtocol> initNetworkService)
    : orgsPersistance_(std::move(orgsPersistance)), initNetworkService_(std::move(initNetworkService)) {}

void StoreOrgsDataManager::fetchAndStoreOrgs() {
    initNetworkService_->initDataDelegate = platform::weakSelf(this);
    initNetworkService_->getAppInitData();
}

void StoreOrgsDataManager::initDataParsed(const std::optional<ParsedInitData>& parsed) {
    bool isStored = parsed && parsed->organisations && orgsPersistance_->storeOrganisations(*parsed->organisations);
    auto listener = delegate.lock();
    if (!listener) return;
    isStored ? listener->orgsStored() : listener->noOrgsFetched();
}

std::shared_ptr<StoreOrgsUseCase> StoreOrgsUseCase::make() {
    return make(std::make_shared<StoreOrgsDataManager>(std::make_shared<OrganisationInUserDefaults>(),
                                                       std::make_shared<AppInitNetworkService>()));
}

std::shared_ptr<StoreOrgsUseCase> StoreOrgsUseCase::make(std::shared_ptr<StoreOrgsDataManager> dataManager) {
    std::shared_ptr<StoreOrgsUseCase> useCase(new StoreOrgsUseCase(std::move(dataManager)));
    useCase->dataManager->delegate = useCase;
    return useCase;
}

void StoreOrgsUseCase::storeOrgs() {
    inBackground([manager = dataManager] { manager->fetchAndStoreOrgs(); });
}

void StoreOrgsUseCase::orgsStored() { notifyDelegate(&StoreOrgsUseCaseDelegate::orgsStored); }
void StoreOrgsUseCase::noOrgsFetched() { notifyDelegate(&StoreOrgsUseCaseDelegate::noOrgsFetched); }

}  // namespace tarvo
