#pragma once

#include <memory>

#include "tarvobase/init_process/steps/AppInitNetworkService.h"
#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/usecase/ErrorProtocols.h"
#include "tarvobase/value_objects/account/OrganisationPersistance.h"

namespace tarvo {

/// The delegate of `StoreOrgsUseCase`. One of `orgsStored` and `noOrgsFetched` is called on the main queue.
class StoreOrgsUseCaseDelegate : public StoreOrgsErrorProtocol {
public:
    virtual void orgsStored() {}
};

/// The delegate of the data manager, called on the queue of its work.
class StoreOrgsDataManagerDelegate : public StoreOrgsErrorProtocol {
public:
    virtual void orgsStored() {}
};

/// Makes the init call and stores the organisations of its answer. Ignores the rest of the answer.
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

/// Updates the stored list of organisations. `storeOrgs` returns at once. Exactly one operation of the delegate is
/// called, unless the delegate or the use case has been released. An answer without organisations leaves the stored
/// list unchanged and counts as a failure. Held by `shared_ptr`.
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
