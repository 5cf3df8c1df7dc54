#include <algorithm>

#include "platform/Json.h"
#include "platform/Text.h"
#include "sandbox/Envelope.h"
#include "sandbox/calls/Answers.h"
#include "sandbox/calls/CallParameters.h"
#include "sandbox/changes/RecordEditor.h"

namespace tarvo::sandbox::calls {
namespace {

constexpr std::size_t longestKey = 200;

/// Returns the key of the request as the log of changes knows it; empty without one. Keys of two accounts are two keys.
std::string keyOf(const Call& call) {
    const auto& key = call.request.transactionId;
    return key.empty() ? "" : call.account + "\n" + key;
}

std::string textOf(const RecordData& record, std::string_view field) { return record.value(field).text; }

/// Carries out one request that changes records and collects its answer.
class ChangeRun {
public:
    ChangeRun(const Call& call, const ModuleData& module)
        : editor(call.data, {call.request.transactionId, call.name, call.account, call.clock}),
          call_(call),
          module_(module) {
        auto known = call.data.rules.find(module.name);
        if (known != call.data.rules.end()) rules_ = known->second;
        form_ = rules_.answer.value_or(module.name == "Notes" ? AnswerForm::texts : AnswerForm::record);
    }

    RecordEditor editor;

    /// Adds the entry of one payload. `isOneOfMany` says that the request has several.
    void add(const RecordEditor::Changed& changed, bool isOneOfMany = false) {
        if (!changed) return refuse(changed.error());
        auto entry = accepted(*changed);
        if (isOneOfMany) entry.mutableMap()->set("record", ValueList{changed->id()});
        entries_.push_back(std::move(entry));
        ids_.push_back(ValueMap{{"id", changed->id()}});
    }
    void addDeleted(const std::string& id) {
        entries_.push_back(envelope::entry(module_.name, {}, call_.now, ValueMap{{"recordId", id}}));
        ids_.push_back(ValueMap{{"id", id}});
    }
    void refuse(const Refusal& refusal) {
        entries_.push_back(envelope::refusedEntry(module_.name, refusal, rules_.hasErrorObjects, call_.now));
    }

    // A key is kept once something was applied under it, so that a refused change may be sent again as it is.
    Reply finish() {
        bool isAccepted = ids_.size() == entries_.size();
        auto answer = form_ == AnswerForm::topLevel && isAccepted ? Value(ValueMap{{"data", std::move(ids_)}})
                                                                  : envelope::answer(std::move(entries_), call_.now);
        if (editor.hasChanges() || rules_.keepKeys) call_.data.changes.keep(keyOf(call_), answer);
        editor.publish();
        return Reply::of(std::move(answer));
    }

private:
    Value accepted(const RecordData& record) const {
        auto id = record.id();
        switch (form_) {
            case AnswerForm::id:
            case AnswerForm::topLevel: {
                Value idEntry = ValueList{"id", id};
                return envelope::entry(module_.name, {Value(ValueList{idEntry})}, call_.now);
            }
            case AnswerForm::recordId:
                return envelope::entry(module_.name, {}, call_.now, ValueMap{{"recordId", id}});
            case AnswerForm::texts:
                return envelope::entry(
                    module_.name, {id, textOf(record, "Created_Time"), textOf(record, "Modified_Time")}, call_.now);
            case AnswerForm::record:
                break;
        }
        return envelope::entry(module_.name, {record.wireForm()}, call_.now, ValueMap{{"recordId", id}});
    }

    const Call& call_;
    const ModuleData& module_;
    RecordRules rules_;
    AnswerForm form_;
    ValueList entries_;
    /// The ids of the accepted changes, each in a map.
    ValueList ids_;
};

Reply refusedRequest(const Call& call, const Refusal& refusal) {
    auto module = parameter(call, "module");
    if (!text::isValidUtf8(module)) module.clear();
    return Reply::of(envelope::answer({envelope::refusedEntry(module, refusal, false, call.now)}, call.now));
}

std::optional<Refusal> refusalOfRequest(const Call& call) {
    const auto& key = call.request.transactionId;
    if (key.size() > longestKey || !text::isValidUtf8(key)) return invalidData("The key of the request is too long.");
    for (const auto& [name, value] : call.request.parameters)
        if (isTemporaryId(value)) return invalidField(name, "names a temporary id");
    return std::nullopt;
}

/// Answers a request whose key is known as before, and any other by `work`, on records of the module that it names.
Reply change(const Call& call, const ModuleData* module, auto&& work) {
    if (auto known = call.data.changes.answerOf(keyOf(call))) return Reply::of(*known);
    if (auto refusal = refusalOfRequest(call)) return refusedRequest(call, *refusal);
    if (!module) return refusedRequest(call, {"INVALID_MODULE", "There is no such module."});
    ChangeRun run(call, *module);
    work(run);
    return run.finish();
}

/// Returns the payloads of a text {"data":[payload,...]}; an empty list for any other text.
ValueList payloadsIn(const std::string& json) {
    auto body = json::parse(json).value_or(Value());
    const auto* map = body.asMap();
    const auto* payloads = map && map->find("data") ? map->find("data")->asList() : nullptr;
    return payloads ? *payloads : ValueList();
}

/// Calls `work` with each payload of the body.
void forEachPayload(const Call& call, ChangeRun& run, auto&& work) {
    auto payloads = payloadsIn(call.request.body);
    if (payloads.empty()) return run.refuse(invalidData("The body is a map with a list \"data\" of records."));
    for (const auto& payload : payloads) run.add(work(payload), payloads.size() > 1);
}

const UploadedFile* uploadedFile(const Request& request) {
    auto found = std::find_if(request.files.begin(), request.files.end(),
                              [](const UploadedFile& file) { return file.field == "file"; });
    return found != request.files.end() && text::isValidUtf8(found->name) ? &*found : nullptr;
}

}  // namespace

Reply addRecords(const Call& call) {
    const auto* module = moduleOf(call);
    return change(call, module, [&](ChangeRun& run) {
        forEachPayload(call, run, [&](const Value& payload) { return run.editor.add(*module, payload); });
    });
}

Reply updateRecords(const Call& call) {
    const auto* module = moduleOf(call);
    return change(call, module, [&](ChangeRun& run) {
        forEachPayload(call, run, [&](const Value& payload) { return run.editor.edit(*module, payload); });
    });
}

Reply deleteRecord(const Call& call) {
    const auto* module = moduleOf(call);
    return change(call, module, [&](ChangeRun& run) {
        auto id = parameter(call, "id");
        if (auto refusal = run.editor.remove(*module, id)) return run.refuse(*refusal);
        run.addDeleted(id);
    });
}

Reply uploadAttachment(const Call& call) {
    const auto* parents = moduleOf(call, "relatedmodule", "relatedmoduleAPI");
    const auto* attachments = parents ? call.data.module("Attachments") : nullptr;
    return change(call, attachments, [&](ChangeRun& run) {
        const auto* file = uploadedFile(call.request);
        if (!file) return run.refuse(invalidField("file", "names the uploaded file"));
        run.add(run.editor.upload(*parents, parameter(call, "id"), *file));
    });
}

Reply uploadVoiceNote(const Call& call) {
    const auto* module = moduleOf(call);
    const auto* notes = module && module->name == "Notes" ? module : nullptr;
    return change(call, notes, [&](ChangeRun& run) {
        const auto* file = uploadedFile(call.request);
        if (!file) return run.refuse(invalidField("file", "names the uploaded file"));
        auto payloads = payloadsIn(parameter(call, "dataJSON"));
        if (payloads.size() != 1)
            return run.refuse(invalidData("\"dataJSON\" is a map with a list \"data\" of one record."));
        run.add(run.editor.addVoiceNote(*notes, payloads.front(), *file));
    });
}

}  // namespace tarvo::sandbox::calls
