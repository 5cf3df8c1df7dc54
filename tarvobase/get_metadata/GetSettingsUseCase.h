#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/value_objects/module/SettingsPersistanceDelegate.h"

namespace tarvo {

/// Receives the answers of `GetSettingsUseCase`, on the main queue.
class GetSettingsUseCaseDelegate : public virtual platform::Object {
public:
    /// The settings are sorted by module, then by the order of their names in `SettingName`.
    virtual void settingsFetched(const std::vector<Settings>& settings) { static_cast<void>(settings); }
    /// There is no such setting, or no store.
    virtual void unableToFetchSettings() {}
};

/// Reports settings from memory and the local database to a delegate. The application's own settings belong to the
/// module "Settings".
class GetSettingsUseCase final : public DelegateUseCase<GetSettingsUseCaseDelegate> {
public:
    /// Uses the database that is open at this moment.
    GetSettingsUseCase();
    explicit GetSettingsUseCase(std::shared_ptr<SettingsPersistanceDelegate> dataManager)
        : dataManager(std::move(dataManager)) {}

    void getAllSettings();
    /// Fetches one setting of all modules that have it.
    void getAllSettings(SettingName settingsKey);
    /// Fetches all settings of a module. The list is empty if it has none.
    void getSettings(const std::string& moduleName);
    void getSettings(const std::string& moduleName, SettingName settingsKey);

    const std::shared_ptr<SettingsPersistanceDelegate> dataManager;

private:
    template <class Read>
    void answerSettings(Read read);
};

}  // namespace tarvo
