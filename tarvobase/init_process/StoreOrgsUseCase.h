#pragma once

#include <memory>

#include "tarvobase/init_process/steps/AppInitNetworkService.h"
#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/usecase/ErrorProtocols.h"
#include "tarvobase/value_objects/account/OrganisationPersistance.h"

namespace tarvo {

/// Hears how `StoreOrgsUseCase` ended, on the main queue: `orgsStored`, or `noOrgsFetched`.
class StoreOrgsUseCaseDelegate : public StoreOrgsErrorProtocol {
public:
    virtual void orgsStored() {}
};

/// Hears of the data manager, on the queue of the work.
class StoreOrgsDataManagerDelegate : public StoreOrgsErrorProtocol {
public:
    virtual void orgsStored() {}
};

/// Stores the organisations that an init call brings, and nothing else of it.
class StoreOrgsDataManager final : public AppInitNetworkServiceDelegate {
public:
    StoreOrgsDataManager(std::shared_ptr<OrganisationPersistance> orgsPersistance,
                         std::shared_ptr<AppInitNetworkServiceProtocol> initNetworkService);

    std::weak_ptr<StoreOrgsDataManagerDelegate> delegate;
    void fetchAndStoreOrgs();
    void initDataParsed(const std::optional<ParsedInitData>& parsed) override;

private:
    std::shared_ptr<OrganisationPersistance> orgsPersistance_;
    std::shared_ptr<AppInitNetworkServiceProtocol> initNetworkService_;
};

/// Brings the list of organisations up to date. `storeOrgs` returns at once; its delegate hears exactly one of the two
/// ends, unless it or the use case is gone. An answer without the organisations leaves the stored list alone and counts
/// as a failure. Held by `shared_ptr`.
class StoreOrgsUseCase final : public DelegateUseCase<StoreOrgsUseCaseDelegate>, public StoreOrgsDataManagerDelegate {
public:
    static std::shared_ptr<StoreOrgsUseCase> make();
    static std::shared_ptr<StoreOrgsUseCase> make(std::shared_ptr<StoreOrgsDataManager> dataManager);

    const std::shared_ptr<StoreOrgsDataManager> dataManager;

    void storeOrgs();
    void orgsStored() override;
    void noOrgsFetched() override;

private:
    explicit StoreOrgsUseCase(std::shared_ptr<StoreOrgsDataManager> dataManager)
        : dataManager(std::move(dataManager)) {}
};

}  // namespace tarvo
