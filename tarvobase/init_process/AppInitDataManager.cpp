#include "tarvobase/init_process/AppInitDataManager.h"

#include "tarvobase/value_objects/ModuleInDatabase.h"

namespace tarvo {

AppInitDataManager::AppInitDataManager(Persistance persistance, std::shared_ptr<AppInitNetworkServiceProtocol> appInitNetworkService)
    : persistance_(std::move(persistance)), appInitNetworkService_(std::move(appInitNetworkService)) {}

std::shared_ptr<AppInitDataManager> AppInitDataManager::make(std::shared_ptr<DatabaseAdapter> adapter,
                                                             std::shared_ptr<UserDefaultsProtocol> userDefaults) {
    auto service = std::make_shared<AppInitNetworkService>();
    ModuleDatabaseConstants constants;
    auto step = std::make_shared<AppInitDataManager>(
        Persistance{.dateTime = std::make_shared<DateTimeInUserDefaults>(userDefaults),
                    .activeModules = std::make_shared<ModuleInDatabase>(std::string(constants.TableName), adapter, constants),
                    .database = adapter},
        service);
    service->initDataDelegate = step;
    service->errorHandler = step;
    return step;
}

void AppInitDataManager::initDataParsed(const std::optional<ParsedInitData>& parsed) {
    if (!parsed) return;
    if (!parsed->createTableQueries) return parsingError();
    createTables(*parsed->createTableQueries);
    if (parsed->dateTimeFormat) {
        persistance_.dateTime->storeDateFormat(parsed->dateTimeFormat->dateFormat);
        persistance_.dateTime->storeTimeFormat(parsed->dateTimeFormat->timeFormat);
    }
    if (parsed->modules) persistance_.activeModules->storeModules(*parsed->modules);
    if (auto listener = appInitdelegate.lock()) listener->appInitDataFetchedAndSaved(*this);
    if (auto listener = delegate.lock()) listener->didComplete(*this, true);
}

void AppInitDataManager::createTables(const std::vector<std::string>& queries) {
    for (auto& query : queries) persistance_.database->createTable(query);
    // The column of this library's own; the server's table does not have it. On a later run the statement fails and is
    // dropped like any other.
    persistance_.database->createTable("ALTER TABLE module_details ADD COLUMN table_creation_query TEXT");
}

}  // namespace tarvo
