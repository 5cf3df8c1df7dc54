#include "tarvobase/init_process/steps/AppInitDataManager.h"
#include "tarvobase/database_layer/DatabaseNaming.h"

#include "tarvobase/init_process/parsers/InitDownloadParser.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/value_objects/account/OrganisationInUserDefaults.h"

namespace tarvo {

namespace {

/// Modules, users and settings are stored through memory, so that memory never lags behind its table.
AppInitDataManager::Persistance persistanceOf(const std::shared_ptr<DatabaseAdapter>& adapter,
                                              const std::shared_ptr<UserDefaultsProtocol>& userDefaults) {
    auto stores = Stores::over(adapter, userDefaults);
    CompanyInfoDatabaseConstants company;
    return {.dateTime = std::make_shared<DateTimeInUserDefaults>(stores.userDefaults),
            .activeModules = stores.modules(),
            .userDetails = std::make_shared<UserDetailsInUserDefaults>(stores.userDefaults),
            .activeUsers = stores.users(),
            .settings = stores.settings(),
            .companyInfo = std::make_shared<CompanyInfoInDatabase>(std::string(company.TableName), adapter, company),
            .orgs = std::make_shared<OrganisationInUserDefaults>(stores.userDefaults),
            .scope = stores.scope};
}

/// Stores the organisations as the server sent them, except for the application's own choice: if there is a current
/// organisation, the one with its name becomes the application's only default.
void storeOrganisations(std::vector<Organisation> organisations, OrganisationPersistance& persistance) {
    if (auto current = persistance.getCurrentOrganisation())
        for (auto& organisation : organisations) organisation.isAppDefault = organisation.orgName == current->orgName;
    persistance.storeOrganisations(organisations);
}

}  // namespace

AppInitDataManager::AppInitDataManager(Persistance persistance,
                                       std::shared_ptr<AppInitNetworkServiceProtocol> appInitNetworkService)
    : persistance_(std::move(persistance)), appInitNetworkService_(std::move(appInitNetworkService)) {}

std::shared_ptr<AppInitDataManager> AppInitDataManager::make(std::shared_ptr<DatabaseAdapter> adapter,
                                                             std::shared_ptr<UserDefaultsProtocol> userDefaults,
                                                             std::shared_ptr<AppInitNetworkService> service) {
    auto step = std::make_shared<AppInitDataManager>(persistanceOf(adapter, userDefaults), service);
    service->initDataDelegate = step;
    service->errorHandler = step;
    return step;
}

void AppInitDataManager::initDataParsed(const std::optional<ParsedInitData>& parsed) {
    if (!parsed) return;
    if (!parsed->createTableQueries) return parsingError();
    bool isStored = store(*parsed);
    if (!isStored) reportUnstored("the answer");
    if (auto listener = isStored ? appInitdelegate.lock() : nullptr) listener->appInitDataFetchedAndSaved(*this);
    if (auto listener = delegate.lock()) listener->didComplete(*this, isStored);
}

bool AppInitDataManager::store(const ParsedInitData& parsed) {
    auto& database = persistance_.scope.databaseAdapter;
    if (!database || !persistance_.scope.isCurrent()) return false;
    if (!createTables(*parsed.createTableQueries)) return false;
    if (!DatabaseNaming::store(*database, persistance_.scope.naming)) return false;
    bool isCommitted = database->tolerantTransaction("init answer", [&] { return storeTables(parsed); });
    if (isCommitted) storeSettings(parsed);
    return isCommitted;
}

bool AppInitDataManager::storeTables(const ParsedInitData& parsed) {
    if (parsed.modules) persistance_.activeModules->storeModules(*parsed.modules);
    if (parsed.users) persistance_.activeUsers->storeUsers(*parsed.users);
    if (parsed.settings) persistance_.settings->storeSettings(*parsed.settings);
    if (parsed.companyInfo) persistance_.companyInfo->storeCompanyInfo(*parsed.companyInfo);
    return true;
}

void AppInitDataManager::storeSettings(const ParsedInitData& parsed) {
    if (parsed.dateTimeFormat) {
        persistance_.dateTime->storeDateFormat(parsed.dateTimeFormat->dateFormat);
        persistance_.dateTime->storeTimeFormat(parsed.dateTimeFormat->timeFormat);
    }
    if (parsed.userDetails) persistance_.userDetails->storeUserDetails(*parsed.userDetails);
    if (parsed.organisations) storeOrganisations(*parsed.organisations, *persistance_.orgs);
}

bool AppInitDataManager::createTables(std::vector<std::string> queries) {
    // This library adds a column that the server's table does not have. On a later run the statement fails and is
    // ignored like any other.
    queries.emplace_back("ALTER TABLE module_details ADD COLUMN table_creation_query TEXT");
    return persistance_.scope.databaseAdapter->createTables(queries);
}

}  // namespace tarvo
