#pragma once

#include <optional>
#include <string>

#include "tarvobase/storage/StoredNames.h"
#include "tarvobase/value_objects/field/SortField.h"
#include "tarvobase/value_objects/module/SettingName.h"

namespace tarvo {

struct Settings;

struct SettingsConstants : StoredNames<SettingsConstants, Settings> {
    /// The two parts of a person's name, as the settings of the name order write them.
    static constexpr std::string_view FirstNameKey = "First Name";
    static constexpr std::string_view LastNameKey = "Last Name";
    /// The module that the application's own settings are stored under.
    static constexpr std::string_view applicationModule = "Settings";

    std::string_view TableName = of("Settings", "APP_SETTINGS");
    std::string_view ModuleName = of("moduleName", "module");
    std::string_view SettingsKey = of("settingsKey", "settings_key");
    std::string_view DefaultSettings = of("defaultSettings", "default_settings");
    std::string_view CustomSettings = of("customSettings", "custom_settings");
    std::string_view IsDefault = of("isDefault", "is_default");
};
struct SettingsDatabaseConstants : TableTwin<SettingsConstants> {};

/// One setting of a module, or of the application under the module "Settings". `customSettings` is the user's choice
/// and `defaultSettings` the server's. Several values in one text are joined with ",".
struct Settings {
    std::string moduleName;
    SettingName settingsKey = SettingName::unknown;
    std::string defaultSettings;
    std::string customSettings;
    bool isDefault = false;

    /// Reads a sort setting: a column and, after ",", "asc" or "desc". Returns nullopt if the text has no column.
    std::optional<SortField> getSortField() const;

    using InMemoryKeys = SettingsConstants;
    static constexpr auto fields() {
        using V = Settings;
        using Names = SettingsConstants;
        return describe(field("moduleName", &V::moduleName, &Names::ModuleName),
                        field("settingsKey", &V::settingsKey, &Names::SettingsKey),
                        field("defaultSettings", &V::defaultSettings, &Names::DefaultSettings),
                        field("customSettings", &V::customSettings, &Names::CustomSettings),
                        field("isDefault", &V::isDefault, &Names::IsDefault));
    }
    friend bool operator==(const Settings&, const Settings&) = default;
};

}  // namespace tarvo
