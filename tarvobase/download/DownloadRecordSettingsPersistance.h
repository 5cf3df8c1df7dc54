#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "tarvobase/sync/ModuleMaps.h"
#include "tarvobase/sync/RecordSyncSettingsPersistance.h"
#include "tarvobase/value_objects/module/SettingsPersistanceDelegate.h"

namespace tarvo {

/// The limits and the progress of downloads of records. A read returns nullopt if nothing is stored. A write that the
/// settings refuse is logged. From any thread.
class DownloadRecordSettingsPersistanceProtocol : public virtual platform::Object {
public:
    /// Returns the number of records of a module that the user wants at most.
    virtual std::optional<std::int64_t> getMaximumRecordsToDownload(const std::string& moduleName) = 0;
    /// Returns the number of records of a module that a download fetches.
    virtual std::optional<std::int64_t> getDownloadRecordsSetting(const std::string& moduleName) = 0;
    /// Returns how many records of a module were downloaded.
    virtual std::optional<std::int64_t> numberOfRecordsDownloaded(const std::string& moduleName) const = 0;
    virtual void storeNumberOfRecordsDownloaded(std::int64_t count, const std::string& for_) = 0;
};

/// Reads the limits from the settings of modules: the user's choice if it is a number, else the server's. Keeps the
/// progress in the settings of the account, beside the watermark. The number that the first download keeps without an
/// account is another one: it counts answers.
class DownloadRecordSettingsPersistance final : public DownloadRecordSettingsPersistanceProtocol {
public:
    DownloadRecordSettingsPersistance(std::shared_ptr<SettingsPersistanceDelegate> settingsPersistanceDelegate,
                                      std::shared_ptr<UserDefaultsProtocol> userDefaults)
        : settingsPersistanceDelegate(std::move(settingsPersistanceDelegate)), userDefaults(std::move(userDefaults)) {}

    const std::shared_ptr<SettingsPersistanceDelegate> settingsPersistanceDelegate;
    const std::shared_ptr<UserDefaultsProtocol> userDefaults;

    std::optional<std::int64_t> getMaximumRecordsToDownload(const std::string& moduleName) override;
    std::optional<std::int64_t> getDownloadRecordsSetting(const std::string& moduleName) override;
    std::optional<std::int64_t> numberOfRecordsDownloaded(const std::string& moduleName) const override;
    void storeNumberOfRecordsDownloaded(std::int64_t count, const std::string& for_) override;

private:
    std::optional<std::int64_t> numberIn(const std::string& moduleName, SettingName setting) const;
    ModuleMaps moduleMaps() const {
        return {userDefaults, ModuleDetailsConstants().ModuleDetails, UserDefaultsGroup::current()};
    }
};

}  // namespace tarvo
