#include "tarvobase/value_objects/module/SettingsInMemeory.h"

namespace tarvo {

namespace {

// A module name may contain any character, so it comes last.
std::string keyOf(const Settings& setting) {
    return std::string(rawText(setting.settingsKey)) + " " + setting.moduleName;
}

}  // namespace

SettingsInMemeory::SettingsInMemeory(std::shared_ptr<InMemoryDatabaseAdapter> inMemoryPersistanceClass,
                                     std::shared_ptr<SettingsPersistanceDelegate> primaryPersistance,
                                     SettingsConstants settingsConstants)
    : InMemoryPersistanceClass(std::move(inMemoryPersistanceClass)),
      settingsConstants(settingsConstants),
      primaryPersistance(std::move(primaryPersistance)),
      memory_(*this, std::string(settingsConstants.TableName), keyOf, this->primaryPersistance != nullptr) {}

bool SettingsInMemeory::storeSettings(const std::vector<Settings>& settings) {
    return memory_.store(settings, [&] { return !primaryPersistance || primaryPersistance->storeSettings(settings); });
}

Result<Settings, ParserError> SettingsInMemeory::getSettingsForModule(const std::string& moduleName,
                                                                      SettingName settingsKey) {
    return memory_.firstOr({{std::string(settingsConstants.ModuleName), moduleName},
                            {std::string(settingsConstants.SettingsKey), settingsKey}},
                           [&] {
                               return primaryPersistance
                                          ? primaryPersistance->getSettingsForModule(moduleName, settingsKey)
                                          : Result<Settings, ParserError>(ParserError::noData());
                           });
}

SettingsPersistanceDelegate::SettingsResult SettingsInMemeory::getSettings(const std::string& for_) {
    return settingsWhere([&](const Settings& setting) { return setting.moduleName == for_; });
}

SettingsPersistanceDelegate::SettingsByModule SettingsInMemeory::getSettingsByModuleNames(
    const std::vector<std::string>& moduleNames) {
    SettingsByModule byModule;
    for (auto& name : moduleNames) byModule[name];
    auto settings = getAllSettings();
    if (!settings) return byModule;
    for (auto& setting : settings.value())
        if (auto asked = byModule.find(setting.moduleName); asked != byModule.end())
            asked->second.push_back(std::move(setting));
    return byModule;
}

SettingsPersistanceDelegate::SettingsResult SettingsInMemeory::getAllSettings(SettingName settingsKey) {
    return settingsWhere([&](const Settings& setting) { return setting.settingsKey == settingsKey; });
}

SettingsPersistanceDelegate::SettingsResult SettingsInMemeory::getAllSettings() {
    return memory_.allOr([&] {
        return primaryPersistance ? primaryPersistance->getAllSettings() : SettingsResult(ParserError::noData());
    });
}

SettingsPersistanceDelegate::SettingsResult SettingsInMemeory::updateDisplayColumns(const std::string& moduleName) {
    if (!primaryPersistance) return getSettings(moduleName);
    auto since = memory_.now();
    if (auto settings = primaryPersistance->updateDisplayColumns(moduleName))
        memory_.fill(since, *settings, InMemoryTable<Settings>::Extent::part);
    return getSettings(moduleName);
}

// Several settings may match, so only the whole table can answer. It is read for the first such request.
template <class Chosen>
SettingsPersistanceDelegate::SettingsResult SettingsInMemeory::settingsWhere(Chosen&& chosen) {
    auto settings = getAllSettings();
    if (settings) std::erase_if(settings.value(), [&](auto& setting) { return !chosen(setting); });
    return settings;
}

}  // namespace tarvo
