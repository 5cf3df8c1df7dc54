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

/// How many records of a module are stored here and how fresh they are. Blocks its caller; from any thread.
class GetRecordCount final : public platform::Object {
public:
    GetRecordCount(std::string moduleName, std::shared_ptr<RecordPersistanceDelegate> recordPersistance,
                   std::shared_ptr<RecordSettingsPersistanceProtocol> settingsPersistance)
        : moduleName_(std::move(moduleName)),
          recordPersistance_(std::move(recordPersistance)),
          settingsPersistance_(std::move(settingsPersistance)) {}

    /// Over the tables of an adapter and a settings store.
    static std::shared_ptr<GetRecordCount> make(const std::string& moduleName,
                                                const std::shared_ptr<DatabaseAdapter>& databaseAdapter,
                                                std::shared_ptr<UserDefaultsProtocol> userDefaults);

    /// Absent when the module has no fields or the database gives no answer.
    std::optional<std::int64_t> getCount() const;
    /// The server's time, in its own text, of the last sync that was complete; absent before the first.
    std::optional<std::string> getLastSyncTime() const;

private:
    const std::string moduleName_;
    const std::shared_ptr<RecordPersistanceDelegate> recordPersistance_;
    const std::shared_ptr<RecordSettingsPersistanceProtocol> settingsPersistance_;
};

}  // namespace tarvo
