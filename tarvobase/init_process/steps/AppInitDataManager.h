#pragma once

#include <memory>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/download/Downloadable.h"
#include "tarvobase/init_process/steps/AppInitNetworkService.h"
#include "tarvobase/usecase/ErrorProtocols.h"
#include "tarvobase/value_objects/account/CompanyInfoInDatabase.h"
#include "tarvobase/value_objects/account/DateTimeInUserDefaults.h"
#include "tarvobase/value_objects/account/OrganisationPersistance.h"
#include "tarvobase/value_objects/account/UserDetailsInUserDefaults.h"
#include "tarvobase/value_objects/account/UserPersistanceDelegate.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"
#include "tarvobase/value_objects/module/SettingsPersistanceDelegate.h"

namespace tarvo {

class AppInitDataManager;

/// Notified when the answer of the init call is stored, on the queue of the work.
class AppInitDataManagerDelegate : public virtual platform::Object {
public:
    virtual void appInitDataFetchedAndSaved(AppInitDataManager& by) = 0;
};

/// The step `appInit`: makes the init call, creates the account's tables from the SQL in its answer, and stores the
/// other blocks. If the block with the tables is missing, the step stores nothing, reports no completion, and passes
/// `parsingError` to the error chain. The adapter logs a statement that SQLite rejects; the others still run. If the
/// database does not store the answer, the step reports `didComplete(false)`.
class AppInitDataManager final : public Downloadable,
                                 public AppInitNetworkServiceDelegate,
                                 public CommonErrorProtocolWithChaining {
public:
    /// The stores of the blocks.
    struct Persistance {
        std::shared_ptr<DateTimePersistanceDelegate> dateTime;
        std::shared_ptr<ModulesPersistanceDelegate> activeModules;
        std::shared_ptr<UserDetailsPersistanceDelegate> userDetails;
        std::shared_ptr<UserPersistanceDelegate> activeUsers;
        std::shared_ptr<SettingsPersistanceDelegate> settings;
        std::shared_ptr<CompanyInfoPersistanceDelegate> companyInfo;
        std::shared_ptr<OrganisationPersistance> orgs;
        Scope scope;
    };
    AppInitDataManager(Persistance persistance, std::shared_ptr<AppInitNetworkServiceProtocol> appInitNetworkService);

    /// Makes a step over an adapter and the settings store, with a network service of its own.
    static std::shared_ptr<AppInitDataManager> make(
        std::shared_ptr<DatabaseAdapter> adapter, std::shared_ptr<UserDefaultsProtocol> userDefaults,
        std::shared_ptr<AppInitNetworkService> service = std::make_shared<AppInitNetworkService>());

    Process processName() const override { return Process::appInit; }
    void execute() override { getAppInitData(); }
    void getAppInitData() { appInitNetworkService_->getAppInitData(); }

    std::weak_ptr<AppInitDataManagerDelegate> appInitdelegate;
    std::shared_ptr<CommonErrorProtocol> nextCommonErrorProtocolResponder() override { return errorResponder.lock(); }

    void initDataParsed(const std::optional<ParsedInitData>& parsed) override;

private:
    bool store(const ParsedInitData& parsed);
    bool createTables(std::vector<std::string> queries);
    bool storeTables(const ParsedInitData& parsed);
    void storeSettings(const ParsedInitData& parsed);

    Persistance persistance_;
    std::shared_ptr<AppInitNetworkServiceProtocol> appInitNetworkService_;
};

}  // namespace tarvo
