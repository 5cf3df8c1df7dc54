#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "sandbox/changes/FieldReader.h"
#include "sandbox/changes/Refusal.h"

namespace tarvo::sandbox {

/// Reads payloads, maps from API name to value, into the values of records. It fills in what the server sets by itself:
/// owner, authors, times, layout, full name, running number and the module of a parent.
class RecordPayload {
public:
    using Read = Result<StoredRecord, Refusal>;

    /// `user` is the one who makes the change, `now` in milliseconds of the server's clock.
    RecordPayload(const DataSet& data, RecordDraft& draft, const UserData& user, std::int64_t now, Sender sender);

    Read ofNew(const RecordShape& shape, const ValueMap& payload);
    /// What the payload does not name stays as it is.
    Read ofEdit(const RecordData& record, const ValueMap& payload);

private:
    struct Work;
    std::optional<Refusal> apply(Work& work, const ValueMap& payload);
    void setModuleOfParent(Work& work, const std::string& parentId);
    void fillNew(Work& work);
    void fillAlways(Work& work);
    StoredRecord finish(Work work);

    const DataSet& data_;
    RecordDraft& draft_;
    const UserData& user_;
    const std::int64_t now_;
    const Sender sender_;
};

}  // namespace tarvo::sandbox
