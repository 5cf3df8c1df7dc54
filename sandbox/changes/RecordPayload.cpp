#include "sandbox/changes/RecordPayload.h"

#include <set>

#include "platform/dates/LocalZone.h"
#include "platform/dates/WireDates.h"
#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox {
namespace {

std::string wireTime(std::int64_t seconds) {
    static const auto zone = platform::LocalZone::named("UTC");
    return platform::wire::writeDateTime(seconds, *zone).value_or("");
}

}  // namespace

/// Holds the record while its payload is read.
struct RecordPayload::Work {
    const RecordShape& shape;
    std::size_t number;
    StoredRecord record;
    /// The values before the change; null for a new record.
    const std::vector<RecordValue>* before;
    /// The fields that the payload sets.
    std::set<std::string, std::less<>> given = {};

    /// Returns null when the module has no such field.
    RecordValue* value(std::string_view name) {
        const auto* field = shape.field(name);
        return field ? &record.values[shape.indexOf(*field)] : nullptr;
    }
    /// Sets a field that the module has and the payload leaves to the server.
    void fill(std::string_view name, const RecordValue& value) {
        if (auto* into = this->value(name); into && !given.contains(name)) *into = value;
    }
    void fill(std::string_view name, std::string_view text) {
        RecordValue value;
        value.setText(text);
        fill(name, value);
    }
    std::int64_t timeOr(std::string_view name, std::int64_t fallback) {
        const auto* value = this->value(name);
        return value ? platform::wire::readDateTime(value->text).value_or(fallback) : fallback;
    }
};

RecordPayload::RecordPayload(const DataSet& data, RecordDraft& draft, const UserData& user, std::int64_t now,
                             Sender sender)
    : data_(data), draft_(draft), user_(user), now_(now), sender_(sender) {}

RecordPayload::Read RecordPayload::ofNew(const RecordShape& shape, const ValueMap& payload) {
    if (payload.contains("id")) return invalidField("id", "is given by the server");
    Work work{shape, draft_.nextNumber(shape), {}, nullptr};
    for (const auto& field : shape.fields()) work.record.values.push_back(emptyValue(*field.data));
    if (auto refusal = apply(work, payload)) return *refusal;
    fillNew(work);
    fillAlways(work);
    return finish(std::move(work));
}

RecordPayload::Read RecordPayload::ofEdit(const RecordData& record, const ValueMap& payload) {
    auto before = record.values();
    Work work{record.shape(), record.number(), {before}, &before};
    if (auto refusal = apply(work, payload)) return *refusal;
    fillAlways(work);
    return finish(std::move(work));
}

std::optional<Refusal> RecordPayload::apply(Work& work, const ValueMap& payload) {
    for (const auto& [name, json] : payload) {
        const auto* field = work.shape.field(name);
        if (!field) return invalidField(name, "is not a field of the module");
        if (field->data->isKey) continue;
        auto place = work.shape.indexOf(*field);
        const auto* before = work.before ? &(*work.before)[place] : nullptr;
        auto value = readField({data_, draft_, sender_, work.shape, *field, json, before});
        if (isIgnored(*field, sender_)) {
            if (json.asText() && isTemporaryId(*json.asText())) return invalidField(name, "names a temporary id");
            continue;
        }
        if (!value) return invalidField(name, value.error());
        if (field->data->target == "se_module") setModuleOfParent(work, value->text);
        work.record.values[place] = std::move(*value);
        work.given.insert(name);
    }
    return std::nullopt;
}

// The fields that name the module of a parent follow from the parent, whatever the payload says.
void RecordPayload::setModuleOfParent(Work& work, const std::string& parentId) {
    auto view = draft_.view();
    auto parent = view.findAnywhere(parentId);
    for (auto name : {"$se_module", "se_module"}) {
        work.given.erase(name);
        work.fill(name, parent ? parent->module() : "");
        work.given.insert(name);
    }
}

void RecordPayload::fillNew(Work& work) {
    for (const auto& field : work.shape.fields()) {
        if (field.data->type == "boolean" && field.data->isReadOnly) work.fill(field.name, "false");
        if (field.data->type == "autonumber")
            work.fill(field.name,
                      "N-" + std::to_string(work.number - RecordShape::firstAddedNumber + work.shape.count() + 1));
    }
    work.fill("Created_By", userValue(user_));
    work.fill("Created_Time", wireTime(now_ / millisecondsOfSecond));
    work.fill("Activity_Type", work.shape.module().name);
    for (const auto& layout : data_.metadata.find(work.shape.module().name)->second.layouts) {
        if (!layout.isDefault) continue;
        RecordValue value;
        value.setText(layout.id);
        value.shown.assign({layout.name});
        work.fill("Layout", value);
    }
}

void RecordPayload::fillAlways(Work& work) {
    work.fill("Modified_By", userValue(user_));
    work.fill("Modified_Time", wireTime(now_ / millisecondsOfSecond));
    if (auto* owner = work.value("Owner"); owner && owner->text.empty()) *owner = userValue(user_);
    if (!work.value("Full_Name")) return;
    std::vector<std::string> title;
    RecordData(work.shape, work.number, &work.record).readTitle(title);
    work.fill("Full_Name", title.back());
}

StoredRecord RecordPayload::finish(Work work) {
    auto seconds = now_ / millisecondsOfSecond;
    work.record.createdTime = work.timeOr("Created_Time", seconds);
    work.record.modifiedTime = work.timeOr("Modified_Time", seconds);
    return std::move(work.record);
}

}  // namespace tarvo::sandbox
