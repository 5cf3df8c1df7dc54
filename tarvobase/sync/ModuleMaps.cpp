#include "tarvobase/sync/ModuleMaps.h"

#include "platform/Log.h"

namespace tarvo {

namespace {

ValueMap mapOrEmpty(const Value* value) { return value && value->asMap() ? *value->asMap() : ValueMap(); }

}  // namespace

ValueMap ModuleMaps::mapOf(const std::string& moduleName) const { return mapOrEmpty(all().find(moduleName)); }

ValueMap ModuleMaps::all() const { return userDefaults_->dictionaryForKey(key_, group_).value_or(ValueMap()); }

void ModuleMaps::merge(const std::string& moduleName, const ValueMap& changes, SettingsFlush flush) const {
    auto merged = [&](const Value& present) -> Value {
        auto all = mapOrEmpty(&present);
        auto map = mapOrEmpty(all.find(moduleName));
        for (auto& [key, value] : changes) map.set(key, value);
        all.set(moduleName, std::move(map));
        return all;
    };
    if (!userDefaults_->update(key_, group_, merged, flush))
        platform::log(platform::LogLevel::warning, "sync",
                      "the state of the records of " + moduleName + " could not be stored");
}

}  // namespace tarvo
