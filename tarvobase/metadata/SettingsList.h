#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/value_objects/field/SortField.h"
#include "tarvobase/value_objects/module/Settings.h"

namespace tarvo {

class FieldList;
struct FieldMetadata;

/// The settings of one module, or of the application. A setting's value is the user's choice.
struct SettingsList {
    std::vector<Settings> settingsList;
    /// The application's settings that hold for every module: the orders of names. Not part of the JSON form.
    std::vector<Settings> applicationSettings{};

    /// Returns the settings that hold for every module out of those of the application.
    static std::vector<Settings> heldByEveryModule(std::vector<Settings> ofApplication);

    /// Returns the first setting with this key, or null. The pointer is valid as long as the list.
    const Settings* getSetting(SettingName key) const;

    /// Returns the identifiers of the columns of the module's list, in their order. Empty without the setting.
    std::vector<std::string> getDisplayCrmColumns() const;
    /// Returns the columns that the server gave, before the user's choice.
    std::vector<std::string> getDefaultDisplayCrmColumns() const;
    std::vector<std::string> getSearchCrmColumns() const;

    std::optional<SortField> getPrimarySortField() const;
    /// Returns the group, primary and secondary sort in this order, as far as they are set.
    std::vector<SortField> getSortColumns() const;
    /// The same for settings that may name a field by either naming: fields that the module has come by identifier.
    std::optional<SortField> getPrimarySortField(const FieldList& fields) const;
    std::vector<SortField> getSortColumns(const FieldList& fields) const;

    /// Return whether names are sorted, or shown, with the first name before the last. The module's own setting comes
    /// before the application's; without either the answer is false.
    bool isSortByFirstNameLastName() const;
    bool isDisplayFirstNameLastName() const;

    /// Return the labels of the user's columns, or of the server's default ones if `isDefault`. The settings may name a
    /// column by either naming. A column without a field is left out.
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
