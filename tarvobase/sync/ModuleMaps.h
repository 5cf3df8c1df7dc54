#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tarvobase/configuration/UserDefaults.h"

namespace tarvo {

/// A dictionary of the settings from module names to maps. Several classes keep their keys in the same maps, so that
/// each write changes its own keys only and is atomic. From any thread.
class ModuleMaps {
public:
    ModuleMaps(std::shared_ptr<UserDefaultsProtocol> userDefaults, std::string_view key, UserDefaultsGroup group)
        : userDefaults_(std::move(userDefaults)), key_(key), group_(std::move(group)) {}

    /// Returns the map of a module, which is empty if none is stored.
    ValueMap mapOf(const std::string& moduleName) const;
    /// Returns the maps of all modules by their names.
    ValueMap all() const;
    /// Sets the keys of `changes` in the map of a module. A write that the settings refuse is logged and changes
    /// nothing.
    void merge(const std::string& moduleName, const ValueMap& changes, SettingsFlush flush = SettingsFlush::now) const;
    void removeAll() const { userDefaults_->removeValueForKey(key_, group_); }

private:
    std::shared_ptr<UserDefaultsProtocol> userDefaults_;
    std::string key_;
    UserDefaultsGroup group_;
};

}  // namespace tarvo
