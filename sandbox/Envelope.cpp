#include "sandbox/Envelope.h"

namespace tarvo::sandbox::envelope {
namespace {

ValueMap info(std::string_view module, std::int64_t now) {
    return ValueMap{{"module", module}, {"servertime", now}, {"responsetime", now}};
}

Value errorItem(std::string_view code, std::string_view message) {
    return ValueMap{{"code", code}, {"message", message}, {"details", ValueMap{}}};
}

Value olderPair(std::int64_t error, Value content, std::int64_t now) {
    ValueMap times{{"servertime", now}, {"error", error}};
    Value pair = ValueList{std::move(times), std::move(content)};
    return ValueMap{{"response", ValueList{std::move(pair)}}};
}

}  // namespace

Value entry(std::string_view module, ValueList rows, std::int64_t now) {
    return entry(module, std::move(rows), now, {});
}

Value entry(std::string_view module, ValueList rows, std::int64_t now, const ValueMap& moreInfo) {
    auto about = info(module, now);
    about.set("nodata", rows.empty());
    about.merge(moreInfo);
    return ValueMap{{"info", std::move(about)}, {"data", std::move(rows)}};
}

Value failedEntry(std::string_view module, std::string_view code, std::string_view message, std::int64_t now) {
    return ValueMap{{"info", info(module, now)}, {"error", ValueList{errorItem(code, message)}}};
}

Value answer(ValueList entries, std::int64_t now) {
    ValueMap times{{"servertime", now}, {"responsetime", now}};
    return ValueMap{{"response", ValueMap{{"result", std::move(entries)}, {"responseInfo", std::move(times)}}}};
}

Value failure(std::string_view code, std::string_view message) {
    return ValueMap{{"error", ValueList{errorItem(code, message)}}};
}

Value olderAnswer(ValueList rows, std::int64_t now) { return olderPair(0, std::move(rows), now); }

Value olderFailure(std::int64_t code, std::string_view message, std::int64_t now) {
    return olderPair(1, ValueMap{{"code", code}, {"message", message}}, now);
}

}  // namespace tarvo::sandbox::envelope
