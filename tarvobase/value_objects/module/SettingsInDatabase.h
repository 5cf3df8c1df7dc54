#pragma once

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/module/SettingsPersistanceDelegate.h"

namespace tarvo {

/// The table of settings.
class SettingsInDatabase final : public DatabasePersistanceClass, public SettingsPersistanceDelegate {
public:
    SettingsInDatabase(std::string tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter,
                       SettingsDatabaseConstants databaseConstants = {});

    bool storeSettings(const std::vector<Settings>& settings) override;
    Result<Settings, ParserError> getSettingsForModule(const std::string& moduleName, SettingName settingsKey) override;
    SettingsResult getSettings(const std::string& for_) override;
    SettingsByModule getSettingsByModuleNames(const std::vector<std::string>& moduleNames) override;
    SettingsResult getAllSettings(SettingName settingsKey) override;
    SettingsResult getAllSettings() override;
    SettingsResult updateDisplayColumns(const std::string& moduleName) override { return getSettings(moduleName); }

private:
    std::optional<std::vector<Settings>> settingsWhere(const Criteria& criteria) const;
    std::optional<std::vector<Settings>> settingsOf(const std::optional<Rows>& rows) const;

    SettingsDatabaseConstants databaseConstants_;
};

}  // namespace tarvo
