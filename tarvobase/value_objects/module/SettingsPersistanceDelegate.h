#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/value_objects/module/Settings.h"

namespace tarvo {

/// The store of settings. Reads fail with `ParserError::noData` when there is no such setting or the store cannot be
/// read. A list may be empty and is in no particular order. Writes return whether they were stored. Any thread may use
/// it.
class SettingsPersistanceDelegate : public virtual platform::Object {
public:
    using SettingsResult = Result<std::vector<Settings>, ParserError>;
    /// The settings of each requested module; the list is empty for a module without settings.
    using SettingsByModule = std::map<std::string, std::vector<Settings>>;

    virtual bool storeSettings(const std::vector<Settings>& settings) = 0;
    virtual Result<Settings, ParserError> getSettingsForModule(const std::string& moduleName,
                                                               SettingName settingsKey) = 0;
    /// Returns all settings of a module.
    virtual SettingsResult getSettings(const std::string& for_) = 0;
    virtual SettingsByModule getSettingsByModuleNames(const std::vector<std::string>& moduleNames) = 0;
    /// Returns one setting of all modules that have it.
    virtual SettingsResult getAllSettings(SettingName settingsKey) = 0;
    /// Returns all settings of all modules.
    virtual SettingsResult getAllSettings() = 0;
    /// Refreshes the columns that a module's list shows from the store behind, and returns the module's settings.
    virtual SettingsResult updateDisplayColumns(const std::string& moduleName) = 0;
};

}  // namespace tarvo
