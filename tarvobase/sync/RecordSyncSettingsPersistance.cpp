#include "tarvobase/sync/RecordSyncSettingsPersistance.h"

#include "platform/Log.h"

namespace tarvo {

namespace {

ValueMap mapOrEmpty(const Value* value) { return value && value->asMap() ? *value->asMap() : ValueMap(); }

template <class T>
std::optional<T> copyOf(const T* value) {
    return value ? std::optional(*value) : std::nullopt;
}

}  // namespace

std::optional<std::string> RecordSyncSettingsPersistance::getLastModifiedTime(const std::string& for_) const {
    auto map = moduleMap(watermarks(), for_);
    auto time = map.find(constants_.LastModifiedTime);
    return time ? copyOf(time->asText()) : std::nullopt;
}

void RecordSyncSettingsPersistance::storeLastModifiedTime(const std::string& time, const std::string& for_) {
    merge(watermarks(), for_, {{std::string(constants_.LastModifiedTime), time}});
}

void RecordSyncSettingsPersistance::storeNumberOfRecordsDownloaded(std::int64_t number, const std::string& moduleName) {
    merge(counts(), moduleName, {{std::string(constants_.NumberOfRecordsFetched), number}});
}

std::optional<std::int64_t> RecordSyncSettingsPersistance::getNumberOfRecordsDownloaded(const std::string& for_) const {
    auto map = moduleMap(counts(), for_);
    auto number = map.find(constants_.NumberOfRecordsFetched);
    return number ? number->asInteger() : std::nullopt;
}

void RecordSyncSettingsPersistance::storeRecordsSynced(const std::string& moduleName, std::int64_t numberOfRecords,
                                                       const std::string& lastModifiedTime) {
    merge(rounds(), moduleName,
          {{std::string(constants_.NumberOfRecordsSynced), numberOfRecords},
           {std::string(constants_.LastModifiedTime), lastModifiedTime}});
}

std::optional<std::int64_t> RecordSyncSettingsPersistance::getNumberOfRcordsSynced(
    const std::string& moduleName, const std::string& lastModifiedTime) const {
    auto map = moduleMap(rounds(), moduleName);
    auto time = map.find(constants_.LastModifiedTime);
    auto number = map.find(constants_.NumberOfRecordsSynced);
    if (!time || !number || *time != Value(lastModifiedTime)) return std::nullopt;
    return number->asInteger();
}

void RecordSyncSettingsPersistance::forgetAll() {
    for (auto& dictionary : {watermarks(), rounds()})
        userDefaults_->removeValueForKey(std::string(dictionary.key), dictionary.group);
}

ValueMap RecordSyncSettingsPersistance::moduleMap(const Dictionary& dictionary, const std::string& moduleName) const {
    auto all = userDefaults_->dictionaryForKey(std::string(dictionary.key), dictionary.group);
    return all ? mapOrEmpty(all->find(moduleName)) : ValueMap();
}

void RecordSyncSettingsPersistance::merge(const Dictionary& dictionary, const std::string& moduleName,
                                          const ValueMap& changes) {
    bool isStored =
        userDefaults_->update(std::string(dictionary.key), dictionary.group, [&](const Value& present) -> Value {
            auto all = mapOrEmpty(&present);
            auto map = mapOrEmpty(all.find(moduleName));
            for (auto& [key, value] : changes) map.set(key, value);
            all.set(moduleName, std::move(map));
            return all;
        });
    if (!isStored)
        platform::log(platform::LogLevel::warning, "sync",
                      "the state of the records of " + moduleName + " could not be stored");
}

}  // namespace tarvo
