#pragma once

#include "tarvobase/storage/InMemoryPersistanceClass.h"
#include "tarvobase/value_objects/module/SettingsPersistanceDelegate.h"

namespace tarvo {

/// Keeps settings in memory, in front of the table of settings. Without a primary store a miss is `noData`.
class SettingsInMemeory final : public InMemoryPersistanceClass, public SettingsPersistanceDelegate {
public:
    explicit SettingsInMemeory(std::shared_ptr<InMemoryDatabaseAdapter> inMemoryPersistanceClass,
                               std::shared_ptr<SettingsPersistanceDelegate> primaryPersistance = nullptr,
                               SettingsConstants settingsConstants = {});

    const SettingsConstants settingsConstants;
    const std::shared_ptr<SettingsPersistanceDelegate> primaryPersistance;

    bool storeSettings(const std::vector<Settings>& settings) override;
    Result<Settings, ParserError> getSettingsForModule(const std::string& moduleName, SettingName settingsKey) override;
    SettingsResult getSettings(const std::string& for_) override;
    SettingsByModule getSettingsByModuleNames(const std::vector<std::string>& moduleNames) override;
    SettingsResult getAllSettings(SettingName settingsKey) override;
    SettingsResult getAllSettings() override;
    SettingsResult updateDisplayColumns(const std::string& moduleName) override;

private:
    template <class Chosen>
    SettingsResult settingsWhere(Chosen&& chosen);

    InMemoryTable<Settings> memory_;
};

}  // namespace tarvo
