#include "tarvobase/value_objects/module/SettingsInDatabase.h"

namespace tarvo {

SettingsInDatabase::SettingsInDatabase(std::string tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                       SettingsDatabaseConstants databaseConstants)
    : DatabasePersistanceClass(std::move(tableName), std::move(databaseAdapter)),
      databaseConstants_(databaseConstants) {}

bool SettingsInDatabase::storeSettings(const std::vector<Settings>& settings) {
    std::vector<ValueMap> rows;
    rows.reserve(settings.size());
    for (auto& setting : settings) rows.push_back(databaseConstants_.getDictionary(setting));
    return table().store(std::move(rows));
}

Result<Settings, ParserError> SettingsInDatabase::getSettingsForModule(const std::string& moduleName,
                                                                       SettingName settingsKey) {
    return firstOrNoData(
        settingsWhere(Criteria::equals({{std::string(databaseConstants_.ModuleName), moduleName},
                                        {std::string(databaseConstants_.SettingsKey), rawText(settingsKey)}})));
}

SettingsPersistanceDelegate::SettingsResult SettingsInDatabase::getSettings(const std::string& for_) {
    return presentOrNoData(settingsWhere(Criteria::equalTo(std::string(databaseConstants_.ModuleName), for_)));
}

SettingsPersistanceDelegate::SettingsByModule SettingsInDatabase::getSettingsByModuleNames(
    const std::vector<std::string>& moduleNames) {
    SettingsByModule byModule;
    for (auto& name : moduleNames) byModule[name];
    auto found = settingsWhere(Criteria::in(std::string(databaseConstants_.ModuleName), valueList(moduleNames)));
    for (auto& setting : found.value_or(std::vector<Settings>())) byModule[setting.moduleName].push_back(setting);
    return byModule;
}

SettingsPersistanceDelegate::SettingsResult SettingsInDatabase::getAllSettings(SettingName settingsKey) {
    return presentOrNoData(
        settingsWhere(Criteria::equalTo(std::string(databaseConstants_.SettingsKey), rawText(settingsKey))));
}

SettingsPersistanceDelegate::SettingsResult SettingsInDatabase::getAllSettings() {
    return presentOrNoData(settingsOf(table().fetchAll()));
}

std::optional<std::vector<Settings>> SettingsInDatabase::settingsWhere(const Criteria& criteria) const {
    return settingsOf(table().fetch(FetchQuery(tableName, criteria)));
}

std::optional<std::vector<Settings>> SettingsInDatabase::settingsOf(const std::optional<Rows>& rows) const {
    return table().valuesOf(rows, [this](const Row& row) { return databaseConstants_.getValue(row); });
}

}  // namespace tarvo
