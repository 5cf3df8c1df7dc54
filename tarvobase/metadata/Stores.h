#pragma once

#include <memory>

#include "tarvobase/configuration/Scope.h"
#include "tarvobase/utils/UserDefaultsUtil.h"
#include "tarvobase/value_objects/account/CurrencyMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/account/UserPersistanceDelegate.h"
#include "tarvobase/value_objects/deal/PipelinePersistanceDelegate.h"
#include "tarvobase/value_objects/deal/PipelineStagePersistanceDelegate.h"
#include "tarvobase/value_objects/field/FieldMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/field/PicklistMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/layout/LayoutMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/layout/ModuleLayoutInfoPersistanceDelegate.h"
#include "tarvobase/value_objects/module/ModulePermissionsPersistanceDelegate.h"
#include "tarvobase/value_objects/module/ModuleRelatedListPersistanceDelegate.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"
#include "tarvobase/value_objects/module/SettingsPersistanceDelegate.h"
#include "tarvobase/value_objects/tag/TagPersistanceDelegate.h"
#include "tarvobase/value_objects/transaction/ChangeRegister.h"
#include "tarvobase/value_objects/transaction/RecordIdAliases.h"
#include "tarvobase/value_objects/transaction/RecordOrder.h"
#include "tarvobase/value_objects/transaction/TransactionDependencyPersistence.h"
#include "tarvobase/value_objects/transaction/TransactionPersistanceDelegate.h"
#include "tarvobase/value_objects/transaction/TransactionPersistence.h"
#include "tarvobase/value_objects/transaction/TransactionRecordPersistanceContract.h"
#include "tarvobase/value_objects/transaction/TransactionRecordPersistanceDelegate.h"
#include "tarvobase/value_objects/view/CustomViewPersistanceDelegate.h"

namespace tarvo {

class InMemoryDatabaseAdapter;
class UserDefaultsProtocol;

/// The composition root, the one place where the stores of values are put together for a scope. Operations take their
/// stores from here when they are made, and keep them, so that their work stays with the account, organisation and
/// database for which they were made. After a switch, a host makes new operations. The object is cheap to make and to
/// copy.
///
/// Values that are read often have a memory in front of their table. Without a database, reads of tables fail and
/// writes do nothing.
class Stores {
public:
    explicit Stores(Scope scope);
    /// Uses the memory and the settings of the caller. Without a memory every read goes to the table.
    Stores(Scope scope, std::shared_ptr<InMemoryDatabaseAdapter> memory,
           std::shared_ptr<UserDefaultsProtocol> userDefaults);

    /// Returns the stores of the scope that is in force now.
    static Stores current();
    /// Returns the same over a database of the caller, which may be null. The settings are those of the scope, unless
    /// the caller hands over settings of a class of its own: `BrenUserDefaults` would follow a switch of account.
    static Stores over(std::shared_ptr<DatabaseAdapter> databaseAdapter,
                       std::shared_ptr<UserDefaultsProtocol> userDefaults = nullptr);

    Scope scope;
    std::shared_ptr<InMemoryDatabaseAdapter> memory;
    /// The settings, whose group `current` is the account of the scope.
    std::shared_ptr<UserDefaultsProtocol> userDefaults;

    const std::shared_ptr<DatabaseAdapter>& databaseAdapter() const { return scope.databaseAdapter; }
    UserDefaultsUtil userDefaultsUtil() const { return UserDefaultsUtil(userDefaults); }

    // These have a memory in front of their table.
    std::shared_ptr<ModulesPersistanceDelegate> modules() const;
    std::shared_ptr<SettingsPersistanceDelegate> settings() const;
    std::shared_ptr<UserPersistanceDelegate> users() const;
    std::shared_ptr<CurrencyMetadataPersistanceDelegate> currencies() const;
    std::shared_ptr<PipelinePersistanceDelegate> pipelines() const;
    std::shared_ptr<PipelineStagePersistanceDelegate> pipelineStages() const;

    // These read their table at each call.
    std::shared_ptr<FieldMetadataPersistanceDelegate> fields() const;
    std::shared_ptr<PicklistMetadataPersistanceDelegate> picklists() const;
    std::shared_ptr<ModuleLayoutInfoPersistanceDelegate> layouts() const;
    std::shared_ptr<LayoutMetadataPersistanceDelegate> layoutFields() const;
    std::shared_ptr<ModuleRelatedListPersistanceDelegate> relatedLists() const;
    std::shared_ptr<ModulePermissionsPersistanceDelegate> permissions() const;
    std::shared_ptr<CustomViewPersistanceDelegate> customViews() const;
    std::shared_ptr<TagPersistanceDelegate> tags() const;
    std::shared_ptr<TagRecordsPersistanceDelegate> tagRecords() const;

    // These belong to the queues of changes, and make their table if the database lacks it.
    std::shared_ptr<TransactionPersistanceDelegate> transactions() const;
    std::shared_ptr<TransactionRecordPersistanceDelegate> transactionRecords() const;
    std::shared_ptr<TransactionPersistence> currentTransactions() const;
    /// Returns the order between the two queues.
    RecordOrder recordOrder() const;
    std::shared_ptr<TransactionDependencyPersistence> transactionDependencies() const;
    std::shared_ptr<TransactionRecordPersistanceContract> currentTransactionRecords() const;
    std::shared_ptr<ChangeRegister> changeRegister() const;
    std::shared_ptr<RecordIdAliases> recordIdAliases() const;
};

}  // namespace tarvo
