#include "sandbox/Control.h"

#include "platform/Json.h"
#include "sandbox/Envelope.h"
#include "sandbox/Sandbox.h"

namespace tarvo::sandbox {
namespace {

constexpr std::int64_t furthestOffset = 100LL * 365 * 24 * 3600 * 1000;

Reply done() { return Reply::of(ValueMap{{"done", true}}); }

}  // namespace

Reply refusedControl(int status, std::string_view message) {
    return Reply::of(envelope::failure("INVALID_REQUEST", message), status);
}

Reply Control::handle(const Request& request) {
    struct Row {
        std::string_view method, path;
        Reply (Control::*handle)(const Request&);
    };
    static constexpr Row rows[] = {
        {"POST", "/control/faults", &Control::addFault},
        {"GET", "/control/faults", &Control::faults},
        {"DELETE", "/control/faults", &Control::clearFaults},
        {"POST", "/control/release", &Control::release},
        {"GET", "/control/requests", &Control::requests},
        {"DELETE", "/control/requests", &Control::clearRequests},
        {"POST", "/control/clock", &Control::setClock},
        {"POST", "/control/tags", &Control::setTags},
        {"POST", "/control/records", &Control::changeRecords},
        {"GET", "/control/records", &Control::records},
        {"POST", "/control/views", &Control::changeViews},
        {"POST", "/control/random", &Control::changeAtRandom},
        {"POST", "/control/sync", &Control::setSync},
        {"GET", "/control/changes", &Control::changes},
        {"GET", "/control/files", &Control::files},
        {"GET", "/control/files/", &Control::file},
        {"POST", "/control/rules", &Control::setRules},
        {"GET", "/control/state", &Control::state},
        {"POST", "/control/stop", &Control::stop},
    };
    // A path that ends with "/" stands for all below it.
    auto isAt = [&](std::string_view path) {
        return path == request.path || (path.ends_with('/') && request.path.starts_with(path));
    };
    for (const auto& row : rows)
        if (row.method == request.method && isAt(row.path)) return (this->*row.handle)(request);
    return refusedControl(404, "There is no such control call.");
}

Reply Control::addFault(const Request& request) {
    auto fault = parseFault(json::parse(request.body).value_or(Value()));
    if (!fault) return refusedControl(400, fault.error());
    sandbox_.faults_.add(*fault);
    return done();
}

Reply Control::faults(const Request&) {
    ValueList list;
    for (const auto& fault : sandbox_.faults_.all()) list.push_back(describeFault(fault));
    return Reply::of(ValueMap{{"faults", std::move(list)}, {"hits", sandbox_.faults_.hits()}});
}

Reply Control::clearFaults(const Request&) {
    sandbox_.faults_.clear();
    return done();
}

Reply Control::release(const Request&) {
    sandbox_.releaseDelays();
    return done();
}

Reply Control::requests(const Request&) { return Reply::of(ValueMap{{"requests", sandbox_.log_.all()}}); }

Reply Control::clearRequests(const Request&) {
    sandbox_.log_.clear();
    return done();
}

Reply Control::setClock(const Request& request) {
    auto body = json::parse(request.body).value_or(Value());
    const auto* map = body.asMap();
    auto offset = map ? map->valueOf("offsetMilliseconds").asInteger() : std::nullopt;
    if (!offset || *offset < -furthestOffset || *offset > furthestOffset)
        return refusedControl(400, "\"offsetMilliseconds\" is a whole number of at most a hundred years.");
    sandbox_.clock_.setOffset(std::chrono::milliseconds(*offset));
    return Reply::of(ValueMap{{"servertime", sandbox_.clock_.milliseconds()}});
}

// {"module":"Leads","tags":[["id","name"],...]} replaces all tags of the module.
Reply Control::setTags(const Request& request) {
    auto body = json::parse(request.body).value_or(Value());
    const auto* map = body.asMap();
    const auto* rows = map && map->find("tags") ? map->find("tags")->asList() : nullptr;
    platform::MutexLock lock(sandbox_.dataMutex_);
    auto& data = sandbox_.data_;
    const auto* module = map ? data.module(map->valueOf("module").textOr("")) : nullptr;
    if (!rows || !module)
        return refusedControl(400, "\"module\" names a module and \"tags\" lists pairs of id and name.");
    std::vector<TagData> tags;
    for (const auto& row : *rows) {
        const auto* pair = row.asList();
        if (!pair || pair->size() != 2 || !pair->at(0).asText() || !pair->at(1).asText())
            return refusedControl(400, "A tag is a pair of texts.");
        tags.push_back({*pair->at(0).asText(), *pair->at(1).asText(), module->name});
    }
    std::erase_if(data.tags, [&](const TagData& tag) { return tag.module == module->name; });
    data.tags.insert(data.tags.end(), tags.begin(), tags.end());
    return done();
}

Reply Control::state(const Request&) {
    platform::MutexLock lock(sandbox_.dataMutex_);
    const auto& data = *dataFor("", "");
    return Reply::of(ValueMap{{"servertime", sandbox_.clock_.milliseconds()},
                              {"requests", sandbox_.log_.total()},
                              {"accounts", static_cast<std::int64_t>(sandbox_.accounts_.all().size())},
                              {"modules", static_cast<std::int64_t>(data.modules.size())},
                              {"users", static_cast<std::int64_t>(data.users.size())},
                              {"tags", static_cast<std::int64_t>(data.tags.size())}});
}

Reply Control::stop(const Request&) {
    sandbox_.onStop_();
    return done();
}

}  // namespace tarvo::sandbox
