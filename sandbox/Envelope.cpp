#include "sandbox/Envelope.h"

#include "platform/Json.h"

namespace tarvo::sandbox::envelope {
namespace {

ValueMap info(std::string_view module, std::int64_t now) {
    return ValueMap{{"module", module}, {"servertime", now}, {"responsetime", now}};
}

ValueMap info(std::string_view module, bool isEmpty, std::int64_t now, const ValueMap& more) {
    auto about = info(module, now);
    about.set("nodata", isEmpty);
    about.merge(more);
    return about;
}

ValueMap times(std::int64_t now) { return ValueMap{{"servertime", now}, {"responsetime", now}}; }

Value errorItem(std::string_view code, std::string_view message, const ValueMap& details = {}) {
    return ValueMap{{"code", code}, {"message", message}, {"details", details}};
}

Value olderPair(std::int64_t error, Value content, std::int64_t now) {
    return ValueList{ValueMap{{"servertime", now}, {"error", error}}, std::move(content)};
}

}  // namespace

Value entry(std::string_view module, ValueList rows, std::int64_t now) {
    return entry(module, std::move(rows), now, {});
}

Value entry(std::string_view module, ValueList rows, std::int64_t now, const ValueMap& moreInfo) {
    auto about = info(module, rows.empty(), now, moreInfo);
    return ValueMap{{"info", std::move(about)}, {"data", std::move(rows)}};
}

Value failedEntry(std::string_view module, std::string_view code, std::string_view message, std::int64_t now) {
    return ValueMap{{"info", info(module, now)}, {"error", ValueList{errorItem(code, message)}}};
}

Value refusedEntry(std::string_view module, const Refusal& refusal, bool asObject, std::int64_t now) {
    auto about = info(module, now);
    if (!asObject) about.set("details", refusal.details);
    auto error = asObject ? ValueList{errorItem(refusal.code, refusal.message, refusal.details)}
                          : ValueList{refusal.code, refusal.message};
    return ValueMap{{"info", std::move(about)}, {"error", std::move(error)}};
}

Value answer(ValueList entries, std::int64_t now) {
    return ValueMap{{"response", ValueMap{{"result", std::move(entries)}, {"responseInfo", times(now)}}}};
}

Writer::Writer(std::int64_t now) : now_(now), json_("{\"response\":{\"result\":[") {}

void Writer::separate() {
    if (!isFirst_) json_ += ',';
    isFirst_ = false;
}

void Writer::add(const Value& entry) {
    separate();
    json_ += json::write(entry).value_or("null");
}

void Writer::add(std::string_view module, bool isEmpty, const ValueMap& moreInfo,
                 const std::function<void(std::string&)>& writeRows) {
    separate();
    json_ += "{\"info\":";
    json_ += json::write(info(module, isEmpty, now_, moreInfo)).value_or("null");
    json_ += ",\"data\":";
    writeRows(json_);
    json_ += '}';
}

std::string Writer::finish() {
    json_ += "],\"responseInfo\":";
    json_ += json::write(times(now_)).value_or("null");
    json_ += "}}";
    return std::move(json_);
}

Value failure(std::string_view code, std::string_view message) {
    return ValueMap{{"error", ValueList{errorItem(code, message)}}};
}

Value olderAnswer(ValueList parts) { return ValueMap{{"response", std::move(parts)}}; }

Value olderPart(ValueList rows, std::int64_t now) { return olderPair(0, std::move(rows), now); }

Value olderFailedPart(std::int64_t code, std::string_view message, std::int64_t now) {
    return olderPair(1, ValueMap{{"code", code}, {"message", message}}, now);
}

}  // namespace tarvo::sandbox::envelope
