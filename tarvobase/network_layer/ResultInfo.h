#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/Result.h"
#include "tarvobase/network_layer/TypedReads.h"

namespace tarvo {

/// Reads the keys of an "info" map. A key of another type counts as absent in the lenient mode, and fails the whole map
/// in the strict mode. A key that is missing or null is absent in both modes.
class InfoReader {
public:
    enum class Mode { lenient, strict };
    InfoReader(const ValueMap& map, Mode mode) : map_(map), mode_(mode) {}

    template <class T>
    void read(std::string_view key, std::optional<T>& into) {
        auto value = map_.find(key);
        if (!value || value->isNull()) return;
        into = readAs<T>(*value);
        if (!into && mode_ == Mode::strict) failed_ = true;
    }
    /// Reports that a necessary part is missing. It fails the whole map in the strict mode.
    void fail() { failed_ = failed_ || mode_ == Mode::strict; }
    bool failed() const { return failed_; }

private:
    const ValueMap& map_;
    Mode mode_;
    bool failed_ = false;
};

/// The header of an entry of an answer. Subclasses add members and read them in `readFrom`.
struct BaseResultInfo {
    virtual ~BaseResultInfo() = default;
    std::optional<std::string> moduleName;
    std::optional<std::int64_t> responseTime;
    std::optional<bool> noData;
    std::optional<std::int64_t> serverTime;
    std::optional<ValueMap> details;

    virtual void readFrom(InfoReader& reader) {
        reader.read("module", moduleName);
        reader.read("responsetime", responseTime);
        reader.read("nodata", noData);
        reader.read("servertime", serverTime);
        reader.read("details", details);
    }
};

struct GetRecordInfo : BaseResultInfo {
    std::optional<std::string> recordId;
    void readFrom(InfoReader& reader) override {
        BaseResultInfo::readFrom(reader);
        reader.read("recordId", recordId);
    }
};

struct RecordListInfo : BaseResultInfo {
    std::optional<std::int64_t> count;
    std::optional<bool> hasMore;
    void readFrom(InfoReader& reader) override {
        BaseResultInfo::readFrom(reader);
        reader.read("count", count);
        reader.read("more_records", hasMore);
    }
};

struct RelatedRecordInfo : RecordListInfo {
    std::optional<std::string> relatedListId;
    void readFrom(InfoReader& reader) override {
        RecordListInfo::readFrom(reader);
        reader.read("relatedlistid", relatedListId);
    }
};

struct CheckInInfo : GetRecordInfo {
    std::optional<std::string> checkInId;
    void readFrom(InfoReader& reader) override {
        GetRecordInfo::readFrom(reader);
        reader.read("checkinId", checkInId);
    }
};

struct SyncLFRecordsInfo : RecordListInfo {
    std::optional<bool> resetLocal;
    void readFrom(InfoReader& reader) override {
        RecordListInfo::readFrom(reader);
        reader.read("resetLocal", resetLocal);
    }
};

/// Reads an info leniently: keys that cannot be read are absent.
template <class Info>
Info infoFromMap(const ValueMap& map) {
    Info info;
    InfoReader reader(map, InfoReader::Mode::lenient);
    info.readFrom(reader);
    return info;
}

/// Reads an info strictly: a key of another type fails the whole.
template <class Info>
Result<Info, ParserError> decodeInfo(const ValueMap& map) {
    Info info;
    InfoReader reader(map, InfoReader::Mode::strict);
    info.readFrom(reader);
    if (reader.failed()) return ParserError::typeConversionFailedForKey("info");
    return info;
}

}  // namespace tarvo
