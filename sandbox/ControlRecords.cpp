#include <algorithm>
#include <numeric>

#include "platform/Json.h"
#include "sandbox/Control.h"
#include "sandbox/JsonText.h"
#include "sandbox/Sandbox.h"
#include "sandbox/changes/RandomChanges.h"
#include "sandbox/changes/RecordEditor.h"

namespace tarvo::sandbox {
namespace {

std::string textIn(const ValueMap& map, std::string_view name) { return map.valueOf(name).textOr(""); }

/// Returns the items of a list; nullopt for any other value, and an empty list for an absent one.
std::optional<ValueList> listIn(const ValueMap& map, std::string_view name) {
    const auto* value = map.find(name);
    if (!value) return ValueList();
    const auto* list = value->asList();
    return list ? std::optional(*list) : std::nullopt;
}

// Holds the records of one moment, so that it is written without the server's lock.
std::string writeRecords(const RecordList& records, bool onlyChanged) {
    std::vector<std::size_t> positions = records.changedPositions();
    if (!onlyChanged) {
        positions.resize(records.size());
        std::iota(positions.begin(), positions.end(), 0);
    }
    std::sort(positions.begin(), positions.end());
    std::string json = "{\"records\":[";
    RecordValue scratch;
    for (auto position : positions) {
        auto record = records.at(position);
        if (!record) continue;
        if (json.back() != '[') json += ',';
        record->writeMap(json, scratch);
    }
    json += "],\"deleted\":[";
    for (auto position : records.deletedPositions()) {
        if (json.back() != '[') json += ',';
        appendJsonText(json, records.idAt(position));
    }
    return json + "]}";
}

}  // namespace

DataSet* Control::dataFor(const std::string& account, const std::string& organisation) {
    sandbox_.dataMutex_.assumeHeld();
    if (account.empty()) return &sandbox_.data_;
    const auto& all = sandbox_.accounts_.all();
    bool isKnown = std::any_of(all.begin(), all.end(), [&](const Account& each) { return each.id == account; });
    return isKnown ? &sandbox_.dataFor(account, organisation) : nullptr;
}

// {"module":"Leads","add":[payload,...],"edit":[payload with "id",...],"delete":[id,...]} changes all or nothing.
Reply Control::changeRecords(const Request& request) {
    auto body = json::parse(request.body).value_or(Value());
    const auto map = body.asMap() ? *body.asMap() : ValueMap();
    auto added = listIn(map, "add"), edited = listIn(map, "edit"), deleted = listIn(map, "delete");
    platform::MutexLock lock(sandbox_.dataMutex_);
    auto* data = dataFor(textIn(map, "account"), textIn(map, "organisation"));
    const auto* module = data ? data->module(textIn(map, "module")) : nullptr;
    if (!module || !added || !edited || !deleted)
        return refusedControl(400, "\"module\" names a module, and \"add\", \"edit\" and \"delete\" are lists.");
    RecordEditor editor(*data, {"", "control/records", textIn(map, "account"), sandbox_.clock_, Sender::control});
    ValueList ids;
    for (const auto& payload : *added) {
        auto record = editor.add(*module, payload);
        if (!record) return refusedControl(400, record.error().message);
        ids.emplace_back(record->id());
    }
    for (const auto& payload : *edited)
        if (auto record = editor.edit(*module, payload); !record) return refusedControl(400, record.error().message);
    for (const auto& id : *deleted)
        if (auto refusal = editor.remove(*module, id.textOr(""))) return refusedControl(400, refusal->message);
    editor.publish();
    return Reply::of(ValueMap{{"added", std::move(ids)}});
}

// {"seed":1,"changes":100,"modules":["Leads",...]} makes random changes, in all modules unless some are named.
Reply Control::changeAtRandom(const Request& request) {
    constexpr std::int64_t mostChanges = 100'000;
    auto body = json::parse(request.body).value_or(Value());
    const auto map = body.asMap() ? *body.asMap() : ValueMap();
    auto seed = map.valueOf("seed").asInteger(), count = map.valueOf("changes").asInteger();
    auto names = listIn(map, "modules");
    platform::MutexLock lock(sandbox_.dataMutex_);
    auto* data = dataFor(textIn(map, "account"), textIn(map, "organisation"));
    if (!data || !seed || !count || *count < 0 || *count > mostChanges || !names)
        return refusedControl(400, "\"seed\" and \"changes\" are whole numbers, and \"modules\" is a list.");
    auto takesRecords = [&](const ModuleData* module) {
        return module && module->hasOwnLists && data->records->shape(module->name);
    };
    std::vector<const ModuleData*> modules;
    for (const auto& name : *names) {
        modules.push_back(data->module(name.textOr("")));
        if (!takesRecords(modules.back())) return refusedControl(400, "\"modules\" names modules that take records.");
    }
    for (const auto& module : data->modules)
        if (names->empty() && takesRecords(&module)) modules.push_back(&module);
    RecordEditor editor(*data, {"", "control/random", textIn(map, "account"), sandbox_.clock_, Sender::control});
    RandomChanges changes(*data, editor, static_cast<std::uint64_t>(*seed), std::move(modules));
    for (auto left = *count; left > 0; --left)
        if (auto refusal = changes.change()) return refusedControl(400, refusal->message);
    editor.publish();
    const auto& made = changes.counts();
    return Reply::of(ValueMap{{"added", made.added}, {"edited", made.edited}, {"deleted", made.deleted}});
}

// {"responsetime":"round" or "page","stuck":false} says how clients that ask for changes are answered.
Reply Control::setSync(const Request& request) {
    auto body = json::parse(request.body).value_or(Value());
    const auto map = body.asMap() ? *body.asMap() : ValueMap();
    platform::MutexLock lock(sandbox_.dataMutex_);
    auto* data = dataFor(textIn(map, "account"), textIn(map, "organisation"));
    auto time = map.contains("responsetime") ? textIn(map, "responsetime") : "page";
    auto isStuck = map.contains("stuck") ? map.valueOf("stuck").asBool() : false;
    if (!data || !body.asMap() || (time != "page" && time != "round") || !isStuck)
        return refusedControl(400, "\"responsetime\" is \"page\" or \"round\", and \"stuck\" is true or false.");
    data->sync.hasTimeOfRound = time == "round";
    data->sync.isStuck = *isStuck;
    return Reply::of(ValueMap{{"done", true}});
}

// "changed" leaves out the records that nobody has added or edited.
Reply Control::records(const Request& request) {
    auto parameter = [&](std::string_view name) { return request.parameter(name).value_or(""); };
    platform::MutexLock lock(sandbox_.dataMutex_);
    auto* data = dataFor(parameter("account"), parameter("organisation"));
    const auto* module = data ? data->module(parameter("module")) : nullptr;
    if (!module || !module->hasOwnLists) return refusedControl(400, "\"module\" names a module with lists of its own.");
    return Reply::writtenBy([list = data->records->now().list(module->name),
                             onlyChanged = parameter("changed") == "true"] { return writeRecords(list, onlyChanged); });
}

Reply Control::changes(const Request& request) {
    platform::MutexLock lock(sandbox_.dataMutex_);
    auto* data = dataFor(request.parameter("account").value_or(""), request.parameter("organisation").value_or(""));
    if (!data) return refusedControl(400, "There is no such account.");
    return Reply::of(ValueMap{{"changes", data->changes.all()}});
}

Reply Control::files(const Request& request) {
    platform::MutexLock lock(sandbox_.dataMutex_);
    auto* data = dataFor(request.parameter("account").value_or(""), request.parameter("organisation").value_or(""));
    if (!data) return refusedControl(400, "There is no such account.");
    return Reply::of(ValueMap{{"files", data->files.all()}});
}

Reply Control::file(const Request& request) {
    platform::MutexLock lock(sandbox_.dataMutex_);
    auto* data = dataFor(request.parameter("account").value_or(""), request.parameter("organisation").value_or(""));
    const auto* file =
        data ? data->files.find(request.path.substr(std::string_view("/control/files/").size())) : nullptr;
    if (!file) return refusedControl(404, "No record of this id came with a file.");
    Reply reply;
    reply.bytes = file->content;
    reply.contentType = file->contentType.empty() ? "application/octet-stream" : file->contentType;
    return reply;
}

// {"module":"Leads","mandatory":[field,...],"unique":[field,...],"refuse":[kind,...],"keepKeys":true,...} replaces all
// rules of the module.
Reply Control::setRules(const Request& request) {
    auto body = json::parse(request.body).value_or(Value());
    const auto map = body.asMap() ? *body.asMap() : ValueMap();
    platform::MutexLock lock(sandbox_.dataMutex_);
    auto* data = dataFor(textIn(map, "account"), textIn(map, "organisation"));
    const auto* module = data ? data->module(textIn(map, "module")) : nullptr;
    const auto* shape = module ? data->records->shape(module->name) : nullptr;
    if (!shape) return refusedControl(400, "\"module\" names a module that has records.");
    auto rules = parseRules(map, *shape);
    if (!rules) return refusedControl(400, rules.error());
    data->rules.insert_or_assign(module->name, *std::move(rules));
    return Reply::of(ValueMap{{"done", true}});
}

}  // namespace tarvo::sandbox
