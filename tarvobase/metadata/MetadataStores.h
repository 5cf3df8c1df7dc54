#pragma once

#include <memory>
#include <string_view>

#include "tarvobase/value_objects/account/CurrencyMetadataPersistanceDelegate.h"
#include "tarvobase/value_objects/account/UserPersistanceDelegate.h"
#include "tarvobase/value_objects/deal/PipelinePersistanceDelegate.h"
#include "tarvobase/value_objects/deal/PipelineStagePersistanceDelegate.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"
#include "tarvobase/value_objects/module/SettingsPersistanceDelegate.h"

namespace tarvo {

class DatabaseAdapter;
class InMemoryDatabaseAdapter;

/// The stores that metadata is read from: each table with its memory in front. Both adapters may be null: without a
/// database the reads fail, without memory every read goes to the table.
struct MetadataStores {
    std::shared_ptr<DatabaseAdapter> databaseAdapter;
    std::shared_ptr<InMemoryDatabaseAdapter> inMemoryDatabaseAdapter;

    /// Over the database that is open at this moment and the memory of the process.
    static MetadataStores current();

    std::shared_ptr<ModulesPersistanceDelegate> modules() const;
    std::shared_ptr<SettingsPersistanceDelegate> settings() const;
    std::shared_ptr<UserPersistanceDelegate> users() const;
    std::shared_ptr<CurrencyMetadataPersistanceDelegate> currencies() const;
    /// Over the database that is open at each call.
    std::shared_ptr<PipelinePersistanceDelegate> pipelines() const;
    std::shared_ptr<PipelineStagePersistanceDelegate> pipelineStages() const;
};

}  // namespace tarvo
