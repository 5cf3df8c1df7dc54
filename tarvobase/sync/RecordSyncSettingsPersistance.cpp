#include "tarvobase/sync/RecordSyncSettingsPersistance.h"

namespace tarvo {

namespace {

template <class T>
std::optional<T> copyOf(const T* value) {
    return value ? std::optional(*value) : std::nullopt;
}

// A note of a round that a loss of power takes costs a repetition of the round: its rows were on the disk before. Most
// rounds bring nothing, and would wait for the disk twice each.
constexpr auto roundFlush = SettingsFlush::later;

// The module's name is the key of the map around a round.
constexpr std::string_view roundModule = "moduleName";

struct RoundWriter {
    ValueMap& map;
    void put(std::string_view name, const std::string& value) const { map.set(name, value); }
    void put(std::string_view name, std::int64_t value) const { map.set(name, value); }
    template <Enumerated E>
    void put(std::string_view name, E value) const {
        map.set(name, std::string(caseName(value)));
    }
    template <class T>
    void put(std::string_view name, const std::optional<T>& value) const {
        if (value) put(name, *value);
    }
};

struct RoundReader {
    const ValueMap& map;
    void take(std::string_view name, std::string& into) const {
        if (auto value = map.find(name); value && value->asText()) into = *value->asText();
    }
    void take(std::string_view name, std::int64_t& into) const {
        if (auto value = map.find(name)) into = value->asInteger().value_or(into);
    }
    template <Enumerated E>
    void take(std::string_view name, E& into) const {
        auto value = map.find(name);
        auto read = value && value->asText() ? fromCaseName<E>(*value->asText()) : std::nullopt;
        if (read) into = *read;
    }
    template <class T>
    void take(std::string_view name, std::optional<T>& into) const {
        if (map.contains(name)) take(name, into.emplace());
    }
};

}  // namespace

std::optional<std::string> RecordSyncSettingsPersistance::getLastModifiedTime(const std::string& for_) const {
    auto map = watermarks().mapOf(for_);
    auto time = map.find(constants_.LastModifiedTime);
    return time ? copyOf(time->asText()) : std::nullopt;
}

void RecordSyncSettingsPersistance::storeLastModifiedTime(const std::string& time, const std::string& for_) {
    watermarks().merge(for_, {{std::string(constants_.LastModifiedTime), time}});
}

void RecordSyncSettingsPersistance::storeNumberOfRecordsDownloaded(std::int64_t number, const std::string& moduleName) {
    counts().merge(moduleName, {{std::string(constants_.NumberOfRecordsFetched), number}});
}

std::optional<std::int64_t> RecordSyncSettingsPersistance::getNumberOfRecordsDownloaded(const std::string& for_) const {
    auto map = counts().mapOf(for_);
    auto number = map.find(constants_.NumberOfRecordsFetched);
    return number ? number->asInteger() : std::nullopt;
}

void RecordSyncSettingsPersistance::storeRecordsSynced(const std::string& moduleName, std::int64_t numberOfRecords,
                                                       const std::string& lastModifiedTime) {
    rounds().merge(moduleName,
                   {{std::string(constants_.NumberOfRecordsSynced), numberOfRecords},
                    {std::string(constants_.LastModifiedTime), lastModifiedTime}},
                   roundFlush);
}

std::optional<std::int64_t> RecordSyncSettingsPersistance::getNumberOfRcordsSynced(
    const std::string& moduleName, const std::string& lastModifiedTime) const {
    auto map = rounds().mapOf(moduleName);
    auto time = map.find(constants_.LastModifiedTime);
    auto number = map.find(constants_.NumberOfRecordsSynced);
    if (!time || !number || *time != Value(lastModifiedTime)) return std::nullopt;
    return number->asInteger();
}

void RecordSyncSettingsPersistance::storeRound(const SyncRound& round) {
    ValueMap map;
    forEachField(round, [&](auto name, auto& member) {
        if (name != roundModule) RoundWriter{map}.put(name, member);
    });
    ValueMap changes{{std::string(constants_.LastRound), std::move(map)}};
    if (round.outcome == SyncRound::Outcome::finished && round.watermark)
        changes.set(constants_.LastModifiedTime, *round.watermark);
    watermarks().merge(round.moduleName, changes, roundFlush);
}

std::optional<SyncRound> RecordSyncSettingsPersistance::getRound(const std::string& moduleName) const {
    return roundIn(moduleName, watermarks().mapOf(moduleName));
}

std::vector<SyncRound> RecordSyncSettingsPersistance::getRounds() const {
    std::vector<SyncRound> rounds;
    auto all = watermarks().all();
    for (auto& [moduleName, value] : all) {
        auto map = value.asMap();
        auto round = map ? roundIn(std::string(moduleName), *map) : std::nullopt;
        if (round) rounds.push_back(*std::move(round));
    }
    return rounds;
}

/// The watermark may have gone back since the round.
std::optional<SyncRound> RecordSyncSettingsPersistance::roundIn(const std::string& moduleName,
                                                                const ValueMap& map) const {
    auto stored = map.find(constants_.LastRound);
    if (!stored || !stored->asMap()) return std::nullopt;
    SyncRound round{.moduleName = moduleName};
    forEachField(round, [&](auto name, auto& member) {
        if (name != roundModule) RoundReader{*stored->asMap()}.take(name, member);
    });
    if (auto time = map.find(constants_.LastModifiedTime)) round.watermark = copyOf(time->asText());
    return round;
}

void RecordSyncSettingsPersistance::forgetAll() {
    watermarks().removeAll();
    rounds().removeAll();
}

}  // namespace tarvo
