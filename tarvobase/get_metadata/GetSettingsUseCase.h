#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/value_objects/module/SettingsPersistanceDelegate.h"

namespace tarvo {

/// Hears the answers of `GetSettingsUseCase`, on the main queue.
class GetSettingsUseCaseDelegate : public virtual platform::Object {
public:
    /// By module, then in the order of the settings' names in `SettingName`.
    virtual void settingsFetched(const std::vector<Settings>& settings) { static_cast<void>(settings); }
    /// There is no such setting, or no store to ask.
    virtual void unableToFetchSettings() {}
};

/// Settings from memory and the local database, told to a delegate. The application's own settings are those of the
/// module "Settings".
class GetSettingsUseCase final : public DelegateUseCase<GetSettingsUseCaseDelegate> {
public:
    /// Over the database that is open at this moment.
    GetSettingsUseCase();
    explicit GetSettingsUseCase(std::shared_ptr<SettingsPersistanceDelegate> dataManager)
        : dataManager(std::move(dataManager)) {}

    void getAllSettings();
    /// One setting of all modules that have it.
    void getAllSettings(SettingName settingsKey);
    /// All settings of a module; a module without any has an empty list.
    void getSettings(const std::string& moduleName);
    void getSettings(const std::string& moduleName, SettingName settingsKey);

    const std::shared_ptr<SettingsPersistanceDelegate> dataManager;

private:
    template <class Ask>
    void answerSettings(Ask ask);
};

}  // namespace tarvo
