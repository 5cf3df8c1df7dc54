#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tarvobase/configuration/UserDefaults.h"

namespace tarvo {

/// Keys under which the settings store keeps how far the records of each module are.
struct ModuleDetailsConstants {
    /// A map from module name to a module's map, which holds the next two.
    std::string_view ModuleDetails = "ModuleDetails";
    std::string_view LastModifiedTime = "TarvoLastModifiedTime";
    std::string_view NumberOfRecordsFetched = "TarvoNumberOfRecordsFetched";
    /// A map from module name to the state of a round that is under way: the number and the time that it began with.
    std::string_view TempKeys = "TarvoTempKeys";
    std::string_view NumberOfRecordsSynced = "TarvoNumberOfRecordsSynced";
};

/// How far the records of modules are. A read is absent when nothing was stored; a write that the store refuses is
/// logged and changes nothing. From any thread, for several modules at once: each write is one step.
class RecordSettingsPersistanceProtocol : public virtual platform::Object {
public:
    /// The watermark: the server's time, in its own text, of the last sync that was complete.
    virtual std::optional<std::string> getLastModifiedTime(const std::string& for_) const = 0;
    virtual void storeLastModifiedTime(const std::string& time, const std::string& for_) = 0;

    /// What downloads count of a module.
    virtual void storeNumberOfRecordsDownloaded(std::int64_t number, const std::string& moduleName) = 0;
    virtual std::optional<std::int64_t> getNumberOfRecordsDownloaded(const std::string& for_) const = 0;

    /// How many records a round of sync has brought so far. Absent for a round that began with another time.
    virtual void storeRecordsSynced(const std::string& moduleName, std::int64_t numberOfRecords,
                                    const std::string& lastModifiedTime) = 0;
    virtual std::optional<std::int64_t> getNumberOfRcordsSynced(const std::string& moduleName,
                                                                const std::string& lastModifiedTime) const = 0;
};

/// The same in the settings store. Watermarks and rounds belong to the current account: with the watermark of another
/// one a sync would pass over changes. The counts of downloads belong to no group.
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

private:
    /// A dictionary of the store, from module names to maps.
    struct Dictionary {
        std::string_view key;
        UserDefaultsGroup group;
    };
    ValueMap moduleMap(const Dictionary& dictionary, const std::string& moduleName) const;
    void merge(const Dictionary& dictionary, const std::string& moduleName, const ValueMap& changes);
    Dictionary watermarks() const { return {constants_.ModuleDetails, UserDefaultsGroup::current()}; }
    Dictionary counts() const { return {constants_.ModuleDetails, UserDefaultsGroup::none()}; }
    Dictionary rounds() const { return {constants_.TempKeys, UserDefaultsGroup::current()}; }

    const std::shared_ptr<UserDefaultsProtocol> userDefaults_;
    const ModuleDetailsConstants constants_;
};

}  // namespace tarvo
