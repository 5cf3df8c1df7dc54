#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/value_objects/field/SortField.h"
#include "tarvobase/value_objects/module/Settings.h"

namespace tarvo {

class FieldList;
struct FieldMetadata;

/// The settings of one module, or of the application. A setting's value is what the user has chosen.
struct SettingsList {
    std::vector<Settings> settingsList;

    /// The first setting with this key, or null. Valid as long as the list.
    const Settings* getSetting(SettingName key) const;

    /// Columns of the module's list, by identifier, in their order; empty without the setting.
    std::vector<std::string> getDisplayCrmColumns() const;
    /// The same as the server gave them, before the user's choice.
    std::vector<std::string> getDefaultDisplayCrmColumns() const;
    std::vector<std::string> getSearchCrmColumns() const;

    std::optional<SortField> getPrimarySortField() const;
    /// Those of group, primary and secondary sort that are set, in this order.
    std::vector<SortField> getSortColumns() const;

    /// Whether names are sorted, or shown, with the first name ahead of the last. False without the setting.
    bool isSortByFirstNameLastName() const;
    bool isDisplayFirstNameLastName() const;

    /// Labels of the search or display columns, or of the server's default ones. A column without a field is left out.
    std::vector<std::string> getSearchFieldLabels(const FieldList& fields, bool isDefault) const;
    std::vector<std::string> getDisplayFieldLabels(const FieldList& fields, bool isDefault) const;
    std::vector<FieldMetadata> getDisplayFieldsMetadata(const FieldList& fields) const;

    static constexpr auto fields() { return describe(field("settingsList", &SettingsList::settingsList)); }
    friend bool operator==(const SettingsList&, const SettingsList&) = default;

private:
    std::vector<std::string> columns(SettingName key, bool isDefault) const;
    bool isFirstNameAhead(SettingName key) const;
};

}  // namespace tarvo
