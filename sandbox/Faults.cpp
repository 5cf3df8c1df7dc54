#include "sandbox/Faults.h"

#include <algorithm>
#include <utility>

#include "platform/Json.h"
#include "sandbox/Envelope.h"

namespace tarvo::sandbox {
namespace {

constexpr std::pair<std::string_view, FaultKind> names[] = {
    {"delay", FaultKind::delay},           {"dropBefore", FaultKind::dropBefore},
    {"dropAfter", FaultKind::dropAfter},   {"truncate", FaultKind::truncate},
    {"nonJson", FaultKind::nonJson},       {"errorEnvelope", FaultKind::errorEnvelope},
    {"wrongTypes", FaultKind::wrongTypes}, {"missingBlocks", FaultKind::missingBlocks},
    {"shortRows", FaultKind::shortRows},   {"repeatBlocks", FaultKind::repeatBlocks},
    {"delayAfter", FaultKind::delayAfter}, {"missingIds", FaultKind::missingIds},
    {"foreignIds", FaultKind::foreignIds}, {"olderEnvelope", FaultKind::olderEnvelope},
    {"entries", FaultKind::entries},       {"noResponseTime", FaultKind::noResponseTime},
    {"noNodata", FaultKind::noNodata},
};

constexpr std::int64_t longestDelay = 10 * 60 * 1000;
// Without blocks the level of `wrongTypes` counts from the document; 2 is the result list.
constexpr int levelOfResult = 2;

std::optional<FaultKind> kindNamed(std::string_view name) {
    for (const auto& [text, kind] : names)
        if (text == name) return kind;
    return std::nullopt;
}

// Entries are named by the module of their info; the pairs of the older form have only a number.
std::string nameOf(const ValueList& result, std::size_t index) {
    const auto* map = result[index].asMap();
    const auto* info = map ? map->find("info") : nullptr;
    if (result[index].asList()) return std::to_string(index);
    return info && info->asMap() ? info->asMap()->valueOf("module").textOr("") : "";
}

bool isTouched(const ValueList& result, std::size_t index, const Fault& fault) {
    if (fault.blocks.empty()) return true;
    return std::find(fault.blocks.begin(), fault.blocks.end(), nameOf(result, index)) != fault.blocks.end();
}

/// Returns the entries, which in the older form are the response itself.
ValueList* resultOf(Value& answer) {
    auto* map = answer.mutableMap();
    auto* response = map ? map->find("response") : nullptr;
    auto* members = response ? response->mutableMap() : nullptr;
    auto* result = members ? members->find("result") : response;
    return result ? result->mutableList() : nullptr;
}

/// Returns what an entry holds: its "data", or in the older form what follows the times.
Value* contentOf(Value& entry) {
    if (auto* pair = entry.mutableList()) return pair->size() == 2 ? &pair->at(1) : nullptr;
    auto* map = entry.mutableMap();
    return map ? map->find("data") : nullptr;
}

// Returns a value of the nearest wrong type: a text becomes a number, anything else a text.
Value wrongType(const Value& value) {
    if (const auto* text = value.asText()) return static_cast<std::int64_t>(text->size());
    return json::write(value).value_or("");
}

void breakTypes(Value& value, int level) {
    if (level == 0) {
        value = wrongType(value);
    } else if (auto* list = value.mutableList()) {
        for (auto& item : *list) breakTypes(item, level - 1);
    } else if (auto* map = value.mutableMap()) {
        std::vector<std::string> keys;
        for (const auto& entry : *map) keys.push_back(entry.name);
        for (const auto& key : keys) breakTypes(*map->find(key), level - 1);
    }
}

/// Calls `change` with the rows of each entry, or with the one row that the fault names, and with its level.
void breakRows(ValueList& result, const Fault& fault, auto&& change) {
    for (std::size_t i = 0; i < result.size(); ++i) {
        auto* data = isTouched(result, i, fault) ? contentOf(result[i]) : nullptr;
        auto* rows = data ? data->mutableList() : nullptr;
        if (data && !fault.row)
            change(*data, fault.level);
        else if (rows && *fault.row < rows->size())
            change((*rows)[*fault.row], std::max(0, fault.level - 1));
    }
}

// Rows lie directly in "data", or one level below in its sections. A row begins with a text, whatever follows.
void shorten(Value& rows) {
    auto* list = rows.mutableList();
    if (!list) return;
    bool holdsRows = !list->empty() && list->front().asList();
    if (holdsRows)
        for (auto& item : *list) shorten(item);
    else
        list->resize(list->size() / 2);
}

void repeat(ValueList& result, const Fault& fault, std::size_t times) {
    ValueList repeated;
    for (std::size_t i = 0; i < result.size(); ++i)
        repeated.insert(repeated.end(), isTouched(result, i, fault) ? times : 1, result[i]);
    result = std::move(repeated);
}

// An id stands in an entry of a record, ["id",...], in a member of a map, or first among texts.
bool isIdEntry(const Value& item) {
    const auto* list = item.asList();
    return list && list->size() > 1 && list->front() == Value("id");
}

bool isId(const Value& item) {
    constexpr std::size_t digits = 19;
    const auto* text = item.asText();
    return text && text->size() == digits && text->find_first_not_of("0123456789") == std::string::npos;
}

/// Puts another id in the place of each; nullopt leaves them out.
void replaceIds(Value& value, const std::optional<std::string>& id) {
    if (auto* list = value.mutableList()) {
        bool beginsWithId = !list->empty() && isId(list->front());
        if (!id) std::erase_if(*list, isIdEntry);
        if (!id && beginsWithId) list->erase(list->begin());
        if (id && beginsWithId) list->front() = *id;
        if (list->empty() || list->front().asText()) return;
        for (auto& item : *list)
            if (isIdEntry(item))
                item.mutableList()->at(1) = *id;
            else
                replaceIds(item, id);
    } else if (auto* map = value.mutableMap()) {
        for (auto name : {"id", "recordId"}) {
            if (!map->contains(name)) continue;
            if (id)
                map->set(name, *id);
            else
                map->remove(name);
        }
        for (auto name : {"response", "result", "info", "data", "record"})
            if (auto* member = map->find(name)) replaceIds(*member, id);
    }
}

void useOlderEnvelope(Value& answer) {
    auto* result = resultOf(answer);
    if (!result) return;
    auto entries = std::move(*result);
    answer = envelope::olderAnswer({envelope::olderPart(std::move(entries), 0)});
}

/// Removes members of each "info" and of the "responseInfo".
void removeInfo(Value& answer, std::initializer_list<std::string_view> members) {
    auto remove = [&](Value* info) {
        auto* map = info ? info->mutableMap() : nullptr;
        if (!map) return;
        for (auto member : members) map->remove(member);
    };
    auto* map = answer.mutableMap();
    auto* response = map ? map->find("response") : nullptr;
    auto* parts = response ? response->mutableMap() : nullptr;
    if (!parts) return;
    remove(parts->find("responseInfo"));
    auto* result = parts->find("result");
    if (auto* entries = result ? result->mutableList() : nullptr)
        for (auto& entry : *entries)
            if (auto* members = entry.mutableMap()) remove(members->find("info"));
}

}  // namespace

std::string_view faultName(FaultKind kind) {
    for (const auto& [text, known] : names)
        if (known == kind) return text;
    return "";
}

Result<Fault, std::string> parseFault(const Value& json) {
    using Parsed = Result<Fault, std::string>;
    const auto* map = json.asMap();
    if (!map) return Parsed::failure("A fault is a JSON object.");
    Fault fault;
    fault.call = map->valueOf("call").textOr("*");
    auto kind = kindNamed(map->valueOf("fault").textOr(""));
    if (!kind) return Parsed::failure("Unknown fault.");
    fault.kind = *kind;
    fault.times = map->valueOf("times").asInteger();
    if (fault.times && *fault.times < 1) return Parsed::failure("\"times\" is at least 1.");
    auto milliseconds = map->valueOf("milliseconds").asInteger().value_or(0);
    if (milliseconds < 0 || milliseconds > longestDelay) return Parsed::failure("\"milliseconds\" is 0 to 600000.");
    fault.duration = std::chrono::milliseconds(milliseconds);
    if (const auto* blocks = map->find("blocks")) {
        if (!blocks->asList()) return Parsed::failure("\"blocks\" is a list of texts.");
        for (const auto& block : *blocks->asList()) fault.blocks.push_back(block.textOr(""));
    }
    auto row = map->valueOf("row").asInteger();
    if (row && *row < 0) return Parsed::failure("\"row\" is at least 0.");
    if (row) fault.row = static_cast<std::size_t>(*row);
    auto level = map->valueOf("level").asInteger().value_or(fault.blocks.empty() && !row ? levelOfResult : 0);
    if (level < 0 || level > 20) return Parsed::failure("\"level\" is 0 to 20.");
    fault.level = static_cast<int>(level);
    auto status = map->valueOf("status").asInteger().value_or(fault.status);
    if (status < 200 || status > 599) return Parsed::failure("\"status\" is 200 to 599.");
    fault.status = static_cast<int>(status);
    auto entries = map->valueOf("entries").asInteger().value_or(0);
    if (entries < 0 || entries > 1000) return Parsed::failure("\"entries\" is 0 to 1000.");
    fault.entries = static_cast<std::size_t>(entries);
    fault.id = map->valueOf("id").textOr(fault.id);
    fault.code = map->valueOf("code").textOr(fault.code);
    fault.message = map->valueOf("message").textOr(fault.message);
    return Parsed::success(std::move(fault));
}

Value describeFault(const Fault& fault) {
    ValueList blocks(fault.blocks.begin(), fault.blocks.end());
    return ValueMap{{"call", fault.call},         {"fault", faultName(fault.kind)},
                    {"times", fault.times},       {"level", fault.level},
                    {"row", fault.row},           {"milliseconds", static_cast<std::int64_t>(fault.duration.count())},
                    {"blocks", std::move(blocks)}};
}

void FaultSwitch::add(Fault fault) {
    platform::MutexLock lock(mutex_);
    faults_.push_back(std::move(fault));
}

void FaultSwitch::clear() {
    platform::MutexLock lock(mutex_);
    faults_.clear();
}

std::optional<Fault> FaultSwitch::take(std::string_view call) {
    platform::MutexLock lock(mutex_);
    auto found = std::find_if(faults_.begin(), faults_.end(),
                              [&](const Fault& fault) { return fault.call == "*" || fault.call == call; });
    if (found == faults_.end()) return std::nullopt;
    ++hits_;
    auto fault = *found;
    if (found->times && --*found->times == 0) faults_.erase(found);
    return fault;
}

std::vector<Fault> FaultSwitch::all() const {
    platform::MutexLock lock(mutex_);
    return faults_;
}

std::int64_t FaultSwitch::hits() const {
    platform::MutexLock lock(mutex_);
    return hits_;
}

bool touchesContent(FaultKind kind) {
    return kind == FaultKind::wrongTypes || kind == FaultKind::missingBlocks || kind == FaultKind::shortRows ||
           kind == FaultKind::repeatBlocks || kind == FaultKind::missingIds || kind == FaultKind::foreignIds ||
           kind == FaultKind::olderEnvelope || kind == FaultKind::entries || kind == FaultKind::noResponseTime ||
           kind == FaultKind::noNodata;
}

void damage(Value& answer, const Fault& fault) {
    if (fault.kind == FaultKind::wrongTypes && fault.blocks.empty() && !fault.row)
        return breakTypes(answer, fault.level);
    if (fault.kind == FaultKind::missingIds) return replaceIds(answer, std::nullopt);
    if (fault.kind == FaultKind::foreignIds) return replaceIds(answer, fault.id);
    if (fault.kind == FaultKind::olderEnvelope) return useOlderEnvelope(answer);
    if (fault.kind == FaultKind::noResponseTime) return removeInfo(answer, {"responsetime", "servertime"});
    if (fault.kind == FaultKind::noNodata) return removeInfo(answer, {"nodata"});
    auto* result = resultOf(answer);
    if (!result) return;
    switch (fault.kind) {
        case FaultKind::wrongTypes:
            return breakRows(*result, fault, breakTypes);
        case FaultKind::shortRows:
            return breakRows(*result, fault, [](Value& rows, int) { shorten(rows); });
        case FaultKind::missingBlocks:
            return repeat(*result, fault, 0);
        case FaultKind::repeatBlocks:
            return repeat(*result, fault, 2);
        case FaultKind::entries:
            return result->resize(fault.entries, result->empty() ? Value() : result->back());
        default:
            return;
    }
}

}  // namespace tarvo::sandbox
