#include "tarvobase/metadata/MetadataStores.h"

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/storage/InMemoryStorage.h"
#include "tarvobase/value_objects/account/CurrencyMetadataInDatabase.h"
#include "tarvobase/value_objects/account/CurrencyMetadataInMemory.h"
#include "tarvobase/value_objects/account/UserInDatabase.h"
#include "tarvobase/value_objects/account/UserInMemory.h"
#include "tarvobase/value_objects/deal/PipelineInDatabase.h"
#include "tarvobase/value_objects/deal/PipelineInMemory.h"
#include "tarvobase/value_objects/module/ModuleInDatabase.h"
#include "tarvobase/value_objects/module/ModulesInMemory.h"
#include "tarvobase/value_objects/module/SettingsInDatabase.h"
#include "tarvobase/value_objects/module/SettingsInMemeory.h"

namespace tarvo {

namespace {

template <class Memory, class Delegate>
std::shared_ptr<Delegate> withMemory(const MetadataStores& stores, std::shared_ptr<Delegate> table) {
    if (!stores.inMemoryDatabaseAdapter) return table;
    return std::make_shared<Memory>(stores.inMemoryDatabaseAdapter, std::move(table));
}

template <class Table, class Constants, class Memory, class Delegate>
std::shared_ptr<Delegate> store(const MetadataStores& stores) {
    return withMemory<Memory, Delegate>(
        stores, std::make_shared<Table>(std::string(Constants().TableName), stores.databaseAdapter, Constants()));
}

}  // namespace

MetadataStores MetadataStores::current() {
    return {CommonConfigration::sharedInstance().databaseAdapter.get(), std::make_shared<InMemoryStorage>()};
}

std::shared_ptr<ModulesPersistanceDelegate> MetadataStores::modules() const {
    return store<ModuleInDatabase, ModuleDatabaseConstants, ModulesInMemory, ModulesPersistanceDelegate>(*this);
}
std::shared_ptr<SettingsPersistanceDelegate> MetadataStores::settings() const {
    return store<SettingsInDatabase, SettingsDatabaseConstants, SettingsInMemeory, SettingsPersistanceDelegate>(*this);
}
std::shared_ptr<UserPersistanceDelegate> MetadataStores::users() const {
    return store<UserInDatabase, UserDatabaseConstants, UserInMemory, UserPersistanceDelegate>(*this);
}
std::shared_ptr<CurrencyMetadataPersistanceDelegate> MetadataStores::currencies() const {
    return store<CurrencyMetadataInDatabase, CurrencyMetadataDatabaseConstants, CurrencyMetadataInMemory,
                 CurrencyMetadataPersistanceDelegate>(*this);
}
std::shared_ptr<PipelinePersistanceDelegate> MetadataStores::pipelines() const {
    return withMemory<PipelineInMemory, PipelinePersistanceDelegate>(*this, std::make_shared<PipelineInDatabase>());
}
std::shared_ptr<PipelineStagePersistanceDelegate> MetadataStores::pipelineStages() const {
    return withMemory<PipelineStagesInMemory, PipelineStagePersistanceDelegate>(
        *this, std::make_shared<PipelineStageInDatabase>());
}

}  // namespace tarvo
