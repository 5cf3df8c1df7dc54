#include "tarvobase/get_metadata/GetSettingsUseCase.h"

#include <algorithm>
#include <tuple>

#include "tarvobase/metadata/Stores.h"

namespace tarvo {

namespace {

using SettingsResult = SettingsPersistanceDelegate::SettingsResult;

SettingsResult sorted(SettingsResult settings) {
    auto byModule = [](const Settings& a, const Settings& b) {
        return std::tie(a.moduleName, a.settingsKey) < std::tie(b.moduleName, b.settingsKey);
    };
    if (settings) std::sort(settings.value().begin(), settings.value().end(), byModule);
    return settings;
}

}  // namespace

GetSettingsUseCase::GetSettingsUseCase() : GetSettingsUseCase(Stores::current().settings()) {}

void GetSettingsUseCase::getAllSettings() {
    answerSettings([](SettingsPersistanceDelegate& store) { return store.getAllSettings(); });
}

void GetSettingsUseCase::getAllSettings(SettingName settingsKey) {
    answerSettings([settingsKey](SettingsPersistanceDelegate& store) { return store.getAllSettings(settingsKey); });
}

void GetSettingsUseCase::getSettings(const std::string& moduleName) {
    answerSettings([moduleName](SettingsPersistanceDelegate& store) { return store.getSettings(moduleName); });
}

void GetSettingsUseCase::getSettings(const std::string& moduleName, SettingName settingsKey) {
    answerSettings([moduleName, settingsKey](SettingsPersistanceDelegate& store) -> SettingsResult {
        return store.getSettingsForModule(moduleName, settingsKey).map([](Settings&& setting) {
            return std::vector{std::move(setting)};
        });
    });
}

template <class Read>
void GetSettingsUseCase::answerSettings(Read read) {
    answer([store = dataManager, read] { return sorted(read(*store)); },
           [](GetSettingsUseCaseDelegate& delegate, const SettingsResult& settings) {
               settings ? delegate.settingsFetched(*settings) : delegate.unableToFetchSettings();
           });
}

}  // namespace tarvo
