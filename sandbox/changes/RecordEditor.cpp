#include "sandbox/changes/RecordEditor.h"

#include <algorithm>

#include "sandbox/changes/RecordPayload.h"

namespace tarvo::sandbox {
namespace {

const ValueMap* payloadOf(const Value& payload) {
    const auto* map = payload.asMap();
    return map && !map->empty() ? map : nullptr;
}

Refusal unknownRecord() { return invalidField("id", "names no record of the module"); }

}  // namespace

RecordEditor::RecordEditor(DataSet& data, ChangeOrigin origin)
    : data_(data), origin_(std::move(origin)), draft_(*data.records) {}

RecordEditor::Changed RecordEditor::add(const ModuleData& module, const Value& payload) {
    const auto* shape = module.hasOwnLists ? data_.records->shape(module.name) : nullptr;
    if (!shape) return Refusal{"INVALID_MODULE", "The module takes no records of its own."};
    const auto* map = payloadOf(payload);
    if (!map) return invalidData("A record is a map from API names to values.");
    return store(*shape, *map, origin_.sender, ChangeKind::add);
}

RecordEditor::Changed RecordEditor::store(const RecordShape& shape, const ValueMap& payload, Sender sender,
                                          ChangeKind kind) {
    if (auto refusal = refusalOf(shape, kind)) return *refusal;
    begin();
    if (draft_.isFull(shape)) return Refusal{"LIMIT_EXCEEDED", "The module takes no more records."};
    auto number = draft_.nextNumber(shape);
    auto read = RecordPayload(data_, draft_, user(), now_, sender).ofNew(shape, payload);
    if (!read) return read.error();
    if (auto refusal = refusalOf(RecordData(shape, number, &*read))) return *refusal;
    auto record = draft_.add(shape, *std::move(read));
    listInNote(record, true);
    applied(record, kind, payload);
    return record;
}

RecordEditor::Changed RecordEditor::edit(const ModuleData& module, const Value& payload) {
    const auto* map = payloadOf(payload);
    const auto* id = map && map->find("id") ? map->find("id")->asText() : nullptr;
    if (!id) return invalidData("An edit is a map with the \"id\" of its record.");
    auto list = draft_.view().list(module.name);
    auto record = list.find(*id);
    if (!record) return unknownRecord();
    if (auto refusal = refusalOf(record->shape(), ChangeKind::edit)) return *refusal;
    begin();
    auto read = RecordPayload(data_, draft_, user(), now_, origin_.sender).ofEdit(*record, *map);
    if (!read) return read.error();
    if (auto refusal = refusalOf(RecordData(record->shape(), record->number(), &*read))) return *refusal;
    listInNote(*record, false);
    auto changed = draft_.edit(*record, *std::move(read));
    listInNote(changed, true);
    applied(changed, ChangeKind::edit, *map);
    return changed;
}

std::optional<Refusal> RecordEditor::remove(const ModuleData& module, const std::string& id) {
    auto list = draft_.view().list(module.name);
    auto record = list.find(id);
    if (!record) return unknownRecord();
    if (auto refusal = refusalOf(record->shape(), ChangeKind::remove)) return refusal;
    begin();
    applied(*record, ChangeKind::remove, Value());
    listInNote(*record, false);
    draft_.remove(*record);
    return std::nullopt;
}

RecordEditor::Changed RecordEditor::upload(const ModuleData& parentModule, const std::string& parentId,
                                           const UploadedFile& file) {
    if (!draft_.view().list(parentModule.name).find(parentId)) return unknownRecord();
    auto attachment =
        store(*data_.records->shape("Attachments"),
              {{"File_Name", file.name}, {"Attachment_Size", file.content.size()}, {"Parent_Id", parentId}},
              Sender::control, ChangeKind::upload);
    if (attachment) files_.emplace(attachment->id(), file);
    return attachment;
}

RecordEditor::Changed RecordEditor::addVoiceNote(const ModuleData& notes, const Value& payload,
                                                 const UploadedFile& sound) {
    auto note = add(notes, payload);
    if (!note) return note;
    StoredRecord changed{note->values(), note->createdTime(), note->modifiedTime()};
    auto set = [&](std::string_view name, std::string_view text) {
        changed.values[note->shape().indexOf(*note->shape().field(name))].setText(text);
    };
    set("voice_note", "true");
    set("Attachment_Size", std::to_string(sound.content.size()));
    files_.emplace(note->id(), sound);
    return draft_.edit(*note, std::move(changed));
}

// A change is later than all times that clients know, even after the clock was set back.
void RecordEditor::begin() {
    now_ = origin_.clock.tick();
    draft_.beginChange(std::max(now_, data_.sync.lastWatermark + 1));
}

void RecordEditor::publish() {
    if (!hasChanges()) return;
    draft_.publish();
    for (auto& change : applied_) data_.changes.add(std::move(change));
    for (auto& [id, file] : files_) data_.files.keep(id, std::move(file));
}

std::optional<Refusal> RecordEditor::refusalOf(const RecordShape& shape, ChangeKind kind) const {
    if (origin_.sender == Sender::control) return std::nullopt;
    auto rules = data_.rules.find(shape.module().name);
    return rules == data_.rules.end() ? std::nullopt : refusalOfKind(rules->second, kind);
}

std::optional<Refusal> RecordEditor::refusalOf(const RecordData& record) const {
    if (origin_.sender == Sender::control) return std::nullopt;
    auto rules = data_.rules.find(record.module());
    return rules == data_.rules.end() ? std::nullopt : refusalOfRecord(rules->second, draft_.view(), record);
}

void RecordEditor::listInNote(const RecordData& attachment, bool isListed) {
    if (attachment.module() != "Attachments") return;
    auto view = draft_.view();
    auto note = view.list("Notes").find(attachment.value("Parent_Id").text);
    if (!note) return;
    StoredRecord changed{note->values(), note->createdTime(), note->modifiedTime()};
    auto& attachments = changed.values[note->shape().indexOf(*note->shape().field("$attachments"))];
    attachments.kind = RecordValue::Kind::rows;
    auto id = attachment.id();
    std::erase_if(attachments.rows, [&](const RecordRow& row) {
        return std::ranges::any_of(
            row.entries, [&](const RecordEntry& entry) { return entry.name == "id" && entry.value.text == id; });
    });
    if (isListed) attachments.rows.push_back(attachment.row());
    draft_.edit(*note, std::move(changed));
}

void RecordEditor::applied(const RecordData& record, ChangeKind kind, Value payload) {
    applied_.push_back({origin_.key, origin_.call, origin_.account, record.module(), record.id(), changeKindName(kind),
                        now_, std::move(payload)});
}

}  // namespace tarvo::sandbox
