#pragma once

#include <memory>

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/configuration/UserDefaults.h"

namespace tarvo {

class DatabaseAdapter;
class InMemoryDatabaseAdapter;

/// Base of the classes that build the object graph of a use case from adapters.
class BaseAssemblerWithDatabase {
public:
    BaseAssemblerWithDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter,
                              std::shared_ptr<InMemoryDatabaseAdapter> inMemoryDatabaseAdapter,
                              std::shared_ptr<BrenDatabaseConstants> databaseConstants)
        : databaseAdapter(std::move(databaseAdapter)),
          databaseConstants(std::move(databaseConstants)),
          inMemoryDatabaseAdapter(std::move(inMemoryDatabaseAdapter)) {}
    virtual ~BaseAssemblerWithDatabase() = default;

    const std::shared_ptr<DatabaseAdapter> databaseAdapter;
    const std::shared_ptr<BrenDatabaseConstants> databaseConstants;
    const std::shared_ptr<InMemoryDatabaseAdapter> inMemoryDatabaseAdapter;
};

class BaseAssemblerWithDatabaseUserDefaults : public BaseAssemblerWithDatabase {
public:
    BaseAssemblerWithDatabaseUserDefaults(std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                          std::shared_ptr<InMemoryDatabaseAdapter> inMemoryDatabaseAdapter,
                                          std::shared_ptr<BrenDatabaseConstants> databaseConstants,
                                          std::shared_ptr<UserDefaultsProtocol> userDefaults)
        : BaseAssemblerWithDatabase(std::move(databaseAdapter), std::move(inMemoryDatabaseAdapter),
                                    std::move(databaseConstants)),
          userDefaults(std::move(userDefaults)) {}

    /// The two databases of an account. The secondary one becomes `databaseAdapter`; the primary one is for assemblers
    /// that need both and may be null.
    struct Adapters {
        std::shared_ptr<DatabaseAdapter> primaryAdapter;
        std::shared_ptr<DatabaseAdapter> secondaryAdapter;
    };
    BaseAssemblerWithDatabaseUserDefaults(const Adapters& adapters,
                                          std::shared_ptr<InMemoryDatabaseAdapter> inMemoryDatabaseAdapter,
                                          std::shared_ptr<BrenDatabaseConstants> databaseConstants,
                                          std::shared_ptr<UserDefaultsProtocol> userDefaults)
        : BaseAssemblerWithDatabaseUserDefaults(adapters.secondaryAdapter, std::move(inMemoryDatabaseAdapter),
                                                std::move(databaseConstants), std::move(userDefaults)) {}

    const std::shared_ptr<UserDefaultsProtocol> userDefaults;
};

}  // namespace tarvo
