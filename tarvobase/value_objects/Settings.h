#pragma once

#include <optional>
#include <string>

#include "tarvobase/value_objects/InMemoryDatabaseAdapter.h"
#include "tarvobase/value_objects/SettingName.h"
#include "tarvobase/value_objects/SortField.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

/// One setting of a module, or of the application under the module "Settings". `customSettings` is what the user has
/// chosen, `defaultSettings` what the server gives; several values in one are joined with ",".
struct Settings {
    std::string moduleName;
    SettingName settingsKey = SettingName::unknown;
    std::string defaultSettings;
    std::string customSettings;
    bool isDefault = false;

    /// The order that a sort setting stands for: a column and, behind ",", "asc" or "desc". Nothing without a column.
    std::optional<SortField> getSortField() const;

    static constexpr auto fields() {
        return describe(field("moduleName", &Settings::moduleName), field("settingsKey", &Settings::settingsKey),
                        field("defaultSettings", &Settings::defaultSettings),
                        field("customSettings", &Settings::customSettings), field("isDefault", &Settings::isDefault));
    }
    friend bool operator==(const Settings&, const Settings&) = default;
};

struct SettingsConstants {
    /// The two halves of a name, as the settings of name orders say them.
    static constexpr std::string_view FirstNameKey = "First Name";
    static constexpr std::string_view LastNameKey = "Last Name";
    /// The module that the application's own settings belong to.
    static constexpr std::string_view applicationModule = "Settings";

    std::string_view TableName = "Settings";
    std::string_view ModuleName = "moduleName";
    std::string_view SettingsKey = "settingsKey";
    std::string_view DefaultSettings = "defaultSettings";
    std::string_view CustomSettings = "customSettings";
    std::string_view IsDefault = "isDefault";

    ValueMap getDictionary(const Settings& settings) const;
    Settings getSettings(const ValueMap& map) const;
};

struct SettingsDatabaseConstants : SettingsConstants {
    constexpr SettingsDatabaseConstants() {
        TableName = "APP_SETTINGS";
        ModuleName = "module";
        SettingsKey = "settings_key";
        DefaultSettings = "default_settings";
        CustomSettings = "custom_settings";
        IsDefault = "is_default";
    }
    ValueMap getDictionary(const Settings& settings) const;
    Settings getSettings(const Row& row) const;
};

/// A member by its plain key, for filters in memory.
InMemoryPropertyValue propertyForKey(const Settings& settings, std::string_view key);

}  // namespace tarvo
