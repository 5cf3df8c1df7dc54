#include "kelva_db/DatabaseValue.h"

#include <algorithm>

#include "platform/Json.h"

namespace kelva {

std::optional<std::int64_t> DatabaseValue::asInteger() const {
    auto held = std::get_if<std::int64_t>(&state_);
    return held ? std::optional(*held) : std::nullopt;
}

std::optional<double> DatabaseValue::asReal() const {
    auto held = std::get_if<double>(&state_);
    return held ? std::optional(*held) : std::nullopt;
}

Value DatabaseValue::value() const {
    if (auto integer = asInteger()) return *integer;
    if (auto real = asReal()) return *real;
    if (auto text = asText()) return *text;
    if (auto blob = asBlob()) return *blob;
    return {};
}

namespace {

DatabaseValue listText(const Value& list) {
    auto json = tarvo::json::write(list);
    return json ? DatabaseValue::text(std::move(*json)) : DatabaseValue();
}

DatabaseValue mapBlob(const Value& map) { return DatabaseValue::blob(tarvo::json::write(map).value_or("")); }

bool isConvertible(const Value& value) {
    return value.kind() != tarvo::ValueKind::object || value.asObjectOf<DatabaseValueConvertible>();
}

}  // namespace

std::optional<DatabaseValue> databaseValue(const Value& value) {
    using tarvo::ValueKind;
    switch (value.kind()) {
        case ValueKind::null:
            return DatabaseValue();
        case ValueKind::boolean:
            return DatabaseValue(static_cast<std::int64_t>(*value.asBool()));
        case ValueKind::integer:
            return DatabaseValue(*value.asInteger());
        case ValueKind::real:
            return DatabaseValue(*value.asReal());
        case ValueKind::text:
            return DatabaseValue::text(*value.asText());
        case ValueKind::bytes:
            return DatabaseValue::blob(value.asBytes()->bytes);
        case ValueKind::list:
            return listText(value);
        case ValueKind::map:
            return mapBlob(value);
        case ValueKind::object:
            break;
    }
    auto convertible = value.asObjectOf<DatabaseValueConvertible>();
    return convertible ? std::optional(convertible->databaseValue()) : std::nullopt;
}

bool allConvertible(std::span<const Value> parameters) {
    return std::all_of(parameters.begin(), parameters.end(), isConvertible);
}

std::optional<Value> fromDatabaseValue(const Value& value) {
    auto text = value.asText();
    return text ? tarvo::json::parse(*text) : std::nullopt;
}

std::optional<Value> fromDatabaseValue(const DatabaseValue& value) {
    auto blob = value.asBlob();
    return blob ? tarvo::json::parse(blob->bytes) : std::nullopt;
}

}  // namespace kelva
