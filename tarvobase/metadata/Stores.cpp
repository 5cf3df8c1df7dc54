#include "tarvobase/metadata/Stores.h"

#include "tarvobase/storage/InMemoryStorage.h"
#include "tarvobase/value_objects/account/CurrencyMetadataInDatabase.h"
#include "tarvobase/value_objects/account/CurrencyMetadataInMemory.h"
#include "tarvobase/value_objects/account/UserInDatabase.h"
#include "tarvobase/value_objects/account/UserInMemory.h"
#include "tarvobase/value_objects/deal/PipelineInDatabase.h"
#include "tarvobase/value_objects/deal/PipelineInMemory.h"
#include "tarvobase/value_objects/field/FieldMetadataInDatabase.h"
#include "tarvobase/value_objects/field/PicklistMetadataInDatabase.h"
#include "tarvobase/value_objects/layout/LayoutMetadataInDatabase.h"
#include "tarvobase/value_objects/layout/ModuleLayoutInfoInDatabase.h"
#include "tarvobase/value_objects/module/ModuleInDatabase.h"
#include "tarvobase/value_objects/module/ModulePermissionsInDatabase.h"
#include "tarvobase/value_objects/module/ModuleRelatedListInDatabase.h"
#include "tarvobase/value_objects/module/ModulesInMemory.h"
#include "tarvobase/value_objects/module/SettingsInDatabase.h"
#include "tarvobase/value_objects/module/SettingsInMemeory.h"
#include "tarvobase/value_objects/tag/TagInDatabase.h"
#include "tarvobase/value_objects/transaction/ChangeRegisterInDatabase.h"
#include "tarvobase/value_objects/transaction/NTransactionInDatabase.h"
#include "tarvobase/value_objects/transaction/NTransactionRecordInDatabase.h"
#include "tarvobase/value_objects/transaction/RecordIdAliasesInDatabase.h"
#include "tarvobase/value_objects/transaction/TransactionDependencyInDatabase.h"
#include "tarvobase/value_objects/transaction/TransactionInDatabase.h"
#include "tarvobase/value_objects/transaction/TransactionRecordInDatabase.h"
#include "tarvobase/value_objects/view/CustomViewInDatabase.h"

namespace tarvo {

namespace {

template <class Table, class Constants, class... More>
std::shared_ptr<Table> tableOf(const Stores& stores, Constants constants, More... more) {
    return std::make_shared<Table>(std::string(constants.TableName), stores.databaseAdapter(), constants,
                                   std::move(more)...);
}

template <class Memory, class Delegate>
std::shared_ptr<Delegate> withMemory(const Stores& stores, std::shared_ptr<Delegate> table) {
    if (!stores.memory) return table;
    return std::make_shared<Memory>(stores.memory, std::move(table));
}

}  // namespace

Stores::Stores(Scope scope)
    : Stores(scope, std::make_shared<InMemoryStorage>(scope), std::make_shared<BrenUserDefaults>(scope.account)) {}
Stores::Stores(Scope scope, std::shared_ptr<InMemoryDatabaseAdapter> memory,
               std::shared_ptr<UserDefaultsProtocol> userDefaults)
    : scope(std::move(scope)), memory(std::move(memory)), userDefaults(std::move(userDefaults)) {}

Stores Stores::current() { return Stores(Scope::current()); }

Stores Stores::over(std::shared_ptr<DatabaseAdapter> databaseAdapter,
                    std::shared_ptr<UserDefaultsProtocol> userDefaults) {
    auto scope = Scope::over(std::move(databaseAdapter));
    if (!userDefaults || std::dynamic_pointer_cast<BrenUserDefaults>(userDefaults)) return Stores(std::move(scope));
    return Stores(scope, std::make_shared<InMemoryStorage>(scope), std::move(userDefaults));
}

std::shared_ptr<ModulesPersistanceDelegate> Stores::modules() const {
    return withMemory<ModulesInMemory, ModulesPersistanceDelegate>(
        *this, tableOf<ModuleInDatabase>(*this, ModuleDatabaseConstants()));
}
std::shared_ptr<SettingsPersistanceDelegate> Stores::settings() const {
    return withMemory<SettingsInMemeory, SettingsPersistanceDelegate>(
        *this, tableOf<SettingsInDatabase>(*this, SettingsDatabaseConstants()));
}
std::shared_ptr<UserPersistanceDelegate> Stores::users() const {
    return withMemory<UserInMemory, UserPersistanceDelegate>(
        *this, tableOf<UserInDatabase>(*this, UserDatabaseConstants(), scope.account));
}
std::shared_ptr<CurrencyMetadataPersistanceDelegate> Stores::currencies() const {
    return withMemory<CurrencyMetadataInMemory, CurrencyMetadataPersistanceDelegate>(
        *this, tableOf<CurrencyMetadataInDatabase>(*this, CurrencyMetadataDatabaseConstants()));
}
std::shared_ptr<PipelinePersistanceDelegate> Stores::pipelines() const {
    return withMemory<PipelineInMemory, PipelinePersistanceDelegate>(
        *this, std::make_shared<PipelineInDatabase>(databaseAdapter()));
}
std::shared_ptr<PipelineStagePersistanceDelegate> Stores::pipelineStages() const {
    return withMemory<PipelineStagesInMemory, PipelineStagePersistanceDelegate>(
        *this, std::make_shared<PipelineStageInDatabase>(databaseAdapter()));
}

std::shared_ptr<FieldMetadataPersistanceDelegate> Stores::fields() const {
    return tableOf<FieldMetadataInDatabase>(*this, FieldMetadataDatabaseConstants());
}
std::shared_ptr<PicklistMetadataPersistanceDelegate> Stores::picklists() const {
    return std::make_shared<PicklistMetadataInDatabase>(databaseAdapter());
}
std::shared_ptr<ModuleLayoutInfoPersistanceDelegate> Stores::layouts() const {
    return std::make_shared<ModuleLayoutInfoInDatabase>(std::string(ModuleLayoutInfoDatabaseConstants().TableName),
                                                        databaseAdapter());
}
std::shared_ptr<LayoutMetadataPersistanceDelegate> Stores::layoutFields() const {
    return std::make_shared<LayoutMetadataInDatabase>(databaseAdapter());
}
std::shared_ptr<ModuleRelatedListPersistanceDelegate> Stores::relatedLists() const {
    return std::make_shared<ModuleRelatedListInDatabase>(databaseAdapter());
}
std::shared_ptr<ModulePermissionsPersistanceDelegate> Stores::permissions() const {
    return std::make_shared<ModulePermissionsInDatabase>(databaseAdapter());
}
std::shared_ptr<CustomViewPersistanceDelegate> Stores::customViews() const {
    return std::make_shared<CustomViewInDatabase>(databaseAdapter());
}
std::shared_ptr<TagPersistanceDelegate> Stores::tags() const {
    return std::make_shared<TagInDatabase>(databaseAdapter());
}
std::shared_ptr<TagRecordsPersistanceDelegate> Stores::tagRecords() const {
    return std::make_shared<TagRecordInDatabase>(databaseAdapter());
}

std::shared_ptr<TransactionPersistanceDelegate> Stores::transactions() const {
    return std::make_shared<TransactionInDatabase>(scope.tableName(TransactionDatabaseConstants().TableName),
                                                   databaseAdapter());
}
std::shared_ptr<TransactionRecordPersistanceDelegate> Stores::transactionRecords() const {
    return std::make_shared<TransactionRecordInDatabase>(databaseAdapter());
}
std::shared_ptr<TransactionPersistence> Stores::currentTransactions() const {
    return std::make_shared<NTransactionInDatabase>(databaseAdapter(), scope.organisation,
                                                    scope.tableName(TransactionDatabaseConstants().TableName));
}
RecordOrder Stores::recordOrder() const {
    return RecordOrder(databaseAdapter(), scope.tableName(TransactionDatabaseConstants().TableName));
}
std::shared_ptr<TransactionDependencyPersistence> Stores::transactionDependencies() const {
    return std::make_shared<TransactionDependencyInDatabase>(databaseAdapter());
}
std::shared_ptr<TransactionRecordPersistanceContract> Stores::currentTransactionRecords() const {
    return std::make_shared<NTransactionRecordInDatabase>(databaseAdapter());
}
std::shared_ptr<ChangeRegister> Stores::changeRegister() const {
    return std::make_shared<ChangeRegisterInDatabase>(databaseAdapter(), scope.organisation);
}
std::shared_ptr<RecordIdAliases> Stores::recordIdAliases() const {
    return std::make_shared<RecordIdAliasesInDatabase>(databaseAdapter(), scope.organisation);
}

}  // namespace tarvo
