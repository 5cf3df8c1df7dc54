#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/Object.h"

namespace tarvo {

class DatabaseAdapter;
class RecordPersistanceDelegate;
class RecordSettingsPersistanceProtocol;
class UserDefaultsProtocol;

/// Reports how many records of a module are stored here and how fresh they are. Blocks its caller; may be called from
/// any thread.
class GetRecordCount final : public platform::Object {
public:
    GetRecordCount(std::string moduleName, std::shared_ptr<RecordPersistanceDelegate> recordPersistance,
                   std::shared_ptr<RecordSettingsPersistanceProtocol> settingsPersistance)
        : moduleName_(std::move(moduleName)),
          recordPersistance_(std::move(recordPersistance)),
          settingsPersistance_(std::move(settingsPersistance)) {}

    /// Uses the tables of an adapter and a settings store.
    static std::shared_ptr<GetRecordCount> make(const std::string& moduleName,
                                                const std::shared_ptr<DatabaseAdapter>& databaseAdapter,
                                                std::shared_ptr<UserDefaultsProtocol> userDefaults);

    /// Returns nullopt if the module has no fields or the database cannot be read.
    std::optional<std::int64_t> getCount() const;
    /// Returns the time of the last complete sync, in the server's own text, or nullopt before the first one.
    std::optional<std::string> getLastSyncTime() const;

private:
    const std::string moduleName_;
    const std::shared_ptr<RecordPersistanceDelegate> recordPersistance_;
    const std::shared_ptr<RecordSettingsPersistanceProtocol> settingsPersistance_;
};

}  // namespace tarvo
