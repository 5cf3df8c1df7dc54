#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Result.h"
#include "sandbox/Message.h"
#include "sandbox/ServerClock.h"
#include "sandbox/changes/ChangeLog.h"
#include "sandbox/changes/FieldReader.h"
#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox {

/// Holds where a change comes from.
struct ChangeOrigin {
    std::string key;
    std::string call;
    std::string account;
    /// Gives each change a time of its own.
    ServerClock& clock;
    /// The rules of the modules hold for clients alone.
    Sender sender = Sender::client;
};

/// Carries out the changes of one request. Each is judged by itself; the accepted ones become visible together. A
/// caller holds the server's lock.
class RecordEditor {
public:
    using Changed = Result<RecordData, Refusal>;

    RecordEditor(DataSet& data, ChangeOrigin origin);

    /// Returns the new record, valid until it is changed again.
    Changed add(const ModuleData& module, const Value& payload);
    /// The payload names the record by its "id".
    Changed edit(const ModuleData& module, const Value& payload);
    /// Returns why the record was not deleted; nullopt when it was.
    std::optional<Refusal> remove(const ModuleData& module, const std::string& id);
    /// Adds an attachment below a record of the module.
    Changed upload(const ModuleData& parentModule, const std::string& parentId, const UploadedFile& file);
    /// Adds a note that was spoken.
    Changed addVoiceNote(const ModuleData& notes, const Value& payload, const UploadedFile& sound);

    /// Shows the records with the changes so far. Valid as long as the editor.
    RecordView view() const { return draft_.view(); }
    bool hasChanges() const { return !applied_.empty(); }
    /// Makes the accepted changes visible and logs them. No call may follow.
    void publish();

private:
    Changed store(const RecordShape& shape, const ValueMap& payload, Sender sender, ChangeKind kind);
    std::optional<Refusal> refusalOf(const RecordShape& shape, ChangeKind kind) const;
    std::optional<Refusal> refusalOf(const RecordData& record) const;
    const UserData& user() const { return data_.userOf(origin_.account); }
    /// Notes list their attachments: puts an attachment into the list of its note, or takes it out.
    void listInNote(const RecordData& attachment, bool isListed);
    void applied(const RecordData& record, ChangeKind kind, Value payload);
    /// Begins a change: gives it its time.
    void begin();

    DataSet& data_;
    const ChangeOrigin origin_;
    RecordDraft draft_;
    /// The time of the change that is made.
    std::int64_t now_ = 0;
    std::vector<AppliedChange> applied_;
    std::map<std::string, UploadedFile> files_;  // by the id of their record
};

}  // namespace tarvo::sandbox
