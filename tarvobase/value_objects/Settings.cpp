#include "tarvobase/value_objects/Settings.h"

namespace tarvo {

namespace {

const auto settingsForm = form<Settings, SettingsConstants>(
    member(&Settings::moduleName, &SettingsConstants::ModuleName),
    member(&Settings::settingsKey, &SettingsConstants::SettingsKey, SettingName::unknown),
    member(&Settings::defaultSettings, &SettingsConstants::DefaultSettings),
    member(&Settings::customSettings, &SettingsConstants::CustomSettings),
    member(&Settings::isDefault, &SettingsConstants::IsDefault));

}  // namespace

std::optional<SortField> Settings::getSortField() const {
    auto parts = text::split(customSettings, ",");
    if (parts.front().empty()) return std::nullopt;
    bool isDescending = parts.size() > 1 && text::equalsIgnoringAsciiCase(parts[1], "desc");
    return SortField{parts.front(), !isDescending};
}

ValueMap SettingsConstants::getDictionary(const Settings& settings) const {
    return settingsForm.toMap(settings, *this, Form::plain);
}
Settings SettingsConstants::getSettings(const ValueMap& map) const {
    return settingsForm.read(map, *this, Form::plain);
}
ValueMap SettingsDatabaseConstants::getDictionary(const Settings& settings) const {
    return settingsForm.toMap(settings, *this, Form::table);
}
Settings SettingsDatabaseConstants::getSettings(const Row& row) const {
    return settingsForm.read(row, *this, Form::table);
}

InMemoryPropertyValue propertyForKey(const Settings& settings, std::string_view key) {
    return propertyOf(settingsForm, settings, key, SettingsConstants());
}

}  // namespace tarvo
