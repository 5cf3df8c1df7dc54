#include "tarvobase/metadata/SettingsList.h"

#include <algorithm>
#include <array>

#include "platform/Text.h"
#include "tarvobase/value_objects/field/FieldList.h"

namespace tarvo {

namespace {

/// Returns the field that a setting names. The server may name it by its API name in either naming.
const FieldMetadata* fieldNamedBySetting(const std::string& name, const FieldList& fields) {
    if (auto field = fields.getField(name)) return field;
    return fields.getFieldByApiName(name);
}

SortField withIdentifier(SortField sortField, const FieldList& fields) {
    if (auto field = fieldNamedBySetting(sortField.column, fields)) sortField.column = fields.identifierOf(*field);
    return sortField;
}

bool isOrderOfNames(SettingName key) {
    return key == SettingName::sortOrderPreference || key == SettingName::displayNameOrder;
}

std::vector<std::string> labelsOf(const std::vector<std::string>& columns, const FieldList& fields) {
    std::vector<std::string> labels;
    for (auto& column : columns)
        if (auto field = fieldNamedBySetting(column, fields)) labels.push_back(field->fieldLabel);
    return labels;
}

}  // namespace

const Settings* SettingsList::getSetting(SettingName key) const {
    auto found = std::find_if(settingsList.begin(), settingsList.end(),
                              [&](auto& setting) { return setting.settingsKey == key; });
    return found == settingsList.end() ? nullptr : &*found;
}

std::vector<std::string> SettingsList::getDisplayCrmColumns() const { return columns(SettingName::display, false); }
std::vector<std::string> SettingsList::getDefaultDisplayCrmColumns() const {
    return columns(SettingName::display, true);
}
std::vector<std::string> SettingsList::getSearchCrmColumns() const { return columns(SettingName::search, false); }

std::optional<SortField> SettingsList::getPrimarySortField() const {
    auto setting = getSetting(SettingName::primarySort);
    return setting ? setting->getSortField() : std::nullopt;
}

std::vector<SortField> SettingsList::getSortColumns() const {
    std::vector<SortField> sortFields;
    for (auto key : {SettingName::groupBy, SettingName::primarySort, SettingName::secondarySort})
        if (auto setting = getSetting(key))
            if (auto sortField = setting->getSortField()) sortFields.push_back(*std::move(sortField));
    return sortFields;
}

std::optional<SortField> SettingsList::getPrimarySortField(const FieldList& fields) const {
    auto sortField = getPrimarySortField();
    return sortField ? std::optional(withIdentifier(*std::move(sortField), fields)) : std::nullopt;
}

std::vector<SortField> SettingsList::getSortColumns(const FieldList& fields) const {
    auto sortFields = getSortColumns();
    for (auto& sortField : sortFields) sortField = withIdentifier(std::move(sortField), fields);
    return sortFields;
}

std::vector<Settings> SettingsList::heldByEveryModule(std::vector<Settings> ofApplication) {
    std::erase_if(ofApplication, [](auto& setting) { return !isOrderOfNames(setting.settingsKey); });
    return ofApplication;
}

bool SettingsList::isSortByFirstNameLastName() const { return isFirstNameAhead(SettingName::sortOrderPreference); }
bool SettingsList::isDisplayFirstNameLastName() const { return isFirstNameAhead(SettingName::displayNameOrder); }

std::vector<std::string> SettingsList::getSearchFieldLabels(const FieldList& fields, bool isDefault) const {
    return labelsOf(columns(SettingName::search, isDefault), fields);
}
std::vector<std::string> SettingsList::getDisplayFieldLabels(const FieldList& fields, bool isDefault) const {
    return labelsOf(columns(SettingName::display, isDefault), fields);
}

std::vector<FieldMetadata> SettingsList::getDisplayFieldsMetadata(const FieldList& fields) const {
    std::vector<FieldMetadata> found;
    for (auto& column : getDisplayCrmColumns())
        if (auto field = fieldNamedBySetting(column, fields)) found.push_back(*field);
    return found;
}

std::vector<std::string> SettingsList::columns(SettingName key, bool isDefault) const {
    auto setting = getSetting(key);
    if (!setting) return {};
    auto columns = text::split(isDefault ? setting->defaultSettings : setting->customSettings, ",");
    std::erase(columns, "");
    return columns;
}

// The order of names is stored as two parts joined with ","; the first part comes first in the name. The server sends
// it as a setting of the application.
bool SettingsList::isFirstNameAhead(SettingName key) const {
    auto setting = getSetting(key);
    for (auto& ofApplication : applicationSettings)
        if (!setting && ofApplication.settingsKey == key) setting = &ofApplication;
    if (!setting) return false;
    auto parts = text::split(setting->customSettings, ",");
    return !parts.empty() && parts.front() == SettingsConstants::FirstNameKey;
}

}  // namespace tarvo
