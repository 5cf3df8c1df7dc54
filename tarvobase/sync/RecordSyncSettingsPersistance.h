#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/sync/ModuleMaps.h"
#include "tarvobase/sync/SyncRound.h"

namespace tarvo {

/// The keys of the sync state of each module's records in the settings store.
struct ModuleDetailsConstants {
    /// A map from module name to the module's map, which contains the next two keys.
    std::string_view ModuleDetails = "ModuleDetails";
    std::string_view LastModifiedTime = "TarvoLastModifiedTime";
    std::string_view NumberOfRecordsFetched = "TarvoNumberOfRecordsFetched";
    /// A map from module name to the state of a sync round in progress: the number of records and the time with which
    /// it began.
    std::string_view TempKeys = "TarvoTempKeys";
    std::string_view NumberOfRecordsSynced = "TarvoNumberOfRecordsSynced";
    /// In the module's map: how its last round went.
    std::string_view LastRound = "TarvoLastSyncRound";
};

/// The sync state of the records of modules. A read returns nullopt if nothing was stored. A write that the store
/// refuses is logged and changes nothing. From any thread; each write is atomic, also for several modules at once.
class RecordSettingsPersistanceProtocol : public virtual platform::Object {
public:
    /// The watermark is the server's time of the last complete sync, in the server's own text.
    virtual std::optional<std::string> getLastModifiedTime(const std::string& for_) const = 0;
    virtual void storeLastModifiedTime(const std::string& time, const std::string& for_) = 0;

    /// The number that downloads count for a module.
    virtual void storeNumberOfRecordsDownloaded(std::int64_t number, const std::string& moduleName) = 0;
    virtual std::optional<std::int64_t> getNumberOfRecordsDownloaded(const std::string& for_) const = 0;

    /// The number of records of a sync round so far. Absent if the round began with another time.
    virtual void storeRecordsSynced(const std::string& moduleName, std::int64_t numberOfRecords,
                                    const std::string& lastModifiedTime) = 0;
    virtual std::optional<std::int64_t> getNumberOfRcordsSynced(const std::string& moduleName,
                                                                const std::string& lastModifiedTime) const = 0;

    /// Stores how a round of a module went. That of a finished round stores its watermark with it, as one change, so
    /// that neither is ever there without the other.
    virtual void storeRound(const SyncRound& round) = 0;
    virtual std::optional<SyncRound> getRound(const std::string& moduleName) const = 0;
    /// Returns the last rounds of all modules, in no particular order.
    virtual std::vector<SyncRound> getRounds() const = 0;
};

/// Keeps the sync state in the settings store. Watermarks and rounds belong to the current account, since a sync with
/// the watermark of another account would miss changes. The counts of downloads belong to no group.
class RecordSyncSettingsPersistance final : public RecordSettingsPersistanceProtocol {
public:
    explicit RecordSyncSettingsPersistance(std::shared_ptr<UserDefaultsProtocol> userDefaults,
                                           ModuleDetailsConstants constants = {})
        : userDefaults_(std::move(userDefaults)), constants_(constants) {}

    std::optional<std::string> getLastModifiedTime(const std::string& for_) const override;
    void storeLastModifiedTime(const std::string& time, const std::string& for_) override;
    void storeNumberOfRecordsDownloaded(std::int64_t number, const std::string& moduleName) override;
    std::optional<std::int64_t> getNumberOfRecordsDownloaded(const std::string& for_) const override;
    void storeRecordsSynced(const std::string& moduleName, std::int64_t numberOfRecords,
                            const std::string& lastModifiedTime) override;
    std::optional<std::int64_t> getNumberOfRcordsSynced(const std::string& moduleName,
                                                        const std::string& lastModifiedTime) const override;
    void storeRound(const SyncRound& round) override;
    std::optional<SyncRound> getRound(const std::string& moduleName) const override;
    std::vector<SyncRound> getRounds() const override;

    /// Forgets the watermarks and rounds of all modules, for a database without their records.
    void forgetAll();

private:
    std::optional<SyncRound> roundIn(const std::string& moduleName, const ValueMap& map) const;
    ModuleMaps watermarks() const { return {userDefaults_, constants_.ModuleDetails, UserDefaultsGroup::current()}; }
    ModuleMaps counts() const { return {userDefaults_, constants_.ModuleDetails, UserDefaultsGroup::none()}; }
    ModuleMaps rounds() const { return {userDefaults_, constants_.TempKeys, UserDefaultsGroup::current()}; }

    const std::shared_ptr<UserDefaultsProtocol> userDefaults_;
    const ModuleDetailsConstants constants_;
};

}  // namespace tarvo
