#include "bridge/forms/JsonForm.h"

#include <cmath>

#include "platform/Text.h"

namespace tarvo::bridge {

namespace {

Value writableText(const std::string& text) { return text::isValidUtf8(text) ? text : text::base64(text); }

Value writableList(const ValueList& list) {
    ValueList result;
    result.reserve(list.size());
    for (auto& value : list) result.push_back(writable(value));
    return result;
}

Value writableMap(const ValueMap& map) {
    ValueMap result;
    result.reserve(map.size());
    for (auto& entry : map) result.set(*writableText(entry.name).asText(), writable(entry.value));
    return result;
}

}  // namespace

Misread unexpected(std::string_view expected, const Value& found) {
    return {{}, std::string(expected) + " is expected, not " + std::string(platform::kindName(found.kind()))};
}

Value writable(const Value& value) {
    switch (value.kind()) {
        case ValueKind::real:
            return std::isfinite(*value.asReal()) ? value : Value();
        case ValueKind::text:
            return writableText(*value.asText());
        case ValueKind::list:
            return writableList(*value.asList());
        case ValueKind::map:
            return writableMap(*value.asMap());
        case ValueKind::object:
            return ValueMap{{"object", value.asObject()->typeName()}};
        default:
            return value;
    }
}

}  // namespace tarvo::bridge
