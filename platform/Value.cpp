#include "platform/Value.h"

#include <algorithm>
#include <charconv>
#include <functional>

namespace tarvo::platform {

std::string_view kindName(ValueKind kind) {
    switch (kind) {
        case ValueKind::null:
            return "null";
        case ValueKind::boolean:
            return "boolean";
        case ValueKind::integer:
            return "integer";
        case ValueKind::real:
            return "real";
        case ValueKind::text:
            return "text";
        case ValueKind::bytes:
            return "bytes";
        case ValueKind::list:
            return "list";
        case ValueKind::map:
            return "map";
        case ValueKind::object:
            return "object";
    }
    return "unknown";
}

Value::Value(ValueList list) : state_(std::make_shared<ValueList>(std::move(list))) {}
Value::Value(ValueMap map) : state_(std::make_shared<ValueMap>(std::move(map))) {}
Value::Value(std::shared_ptr<const ValueObject> object) {
    if (object) state_ = std::move(object);
}

std::optional<bool> Value::asBool() const {
    auto held = std::get_if<bool>(&state_);
    return held ? std::optional(*held) : std::nullopt;
}
std::optional<std::int64_t> Value::asInteger() const {
    auto held = std::get_if<std::int64_t>(&state_);
    return held ? std::optional(*held) : std::nullopt;
}
std::optional<double> Value::asReal() const {
    auto held = std::get_if<double>(&state_);
    return held ? std::optional(*held) : std::nullopt;
}
const Bytes* Value::asBytes() const {
    auto held = std::get_if<std::shared_ptr<const Bytes>>(&state_);
    return held ? held->get() : nullptr;
}
const ValueList* Value::asList() const {
    auto held = std::get_if<List>(&state_);
    return held ? held->get() : nullptr;
}
const ValueMap* Value::asMap() const {
    auto held = std::get_if<Map>(&state_);
    return held ? held->get() : nullptr;
}
const ValueObject* Value::asObject() const {
    auto held = std::get_if<Object>(&state_);
    return held ? held->get() : nullptr;
}

namespace {

// The one holder may change what it holds; everybody else gets a clone.
template <class T>
T* ownedByOne(std::shared_ptr<T>& held) {
    if (held.use_count() != 1) {
        held = std::make_shared<T>(*held);
    } else {
        // Reading the count orders nothing. Taking one more reference and dropping it again makes this thread see that
        // whoever had the others was through with reading.
        auto ordered = held;
    }
    return held.get();
}

}  // namespace

ValueList* Value::mutableList() {
    auto held = std::get_if<List>(&state_);
    return held ? ownedByOne(*held) : nullptr;
}
ValueMap* Value::mutableMap() {
    auto held = std::get_if<Map>(&state_);
    return held ? ownedByOne(*held) : nullptr;
}

std::string Value::textOr(std::string_view fallback) const {
    auto text = asText();
    return text ? *text : std::string(fallback);
}

std::optional<double> Value::toReal() const {
    if (auto integer = asInteger()) return static_cast<double>(*integer);
    return asReal();
}

std::optional<std::string> Value::toText() const {
    switch (kind()) {
        case ValueKind::text:
            return *asText();
        case ValueKind::boolean:
            return *asBool() ? "true" : "false";
        case ValueKind::integer:
            return std::to_string(*asInteger());
        case ValueKind::real: {
            char buffer[32];
            auto end = std::to_chars(buffer, buffer + sizeof buffer, *asReal()).ptr;
            return std::string(buffer, end);
        }
        default:
            return std::nullopt;
    }
}

bool operator==(const Value& a, const Value& b) {
    if (a.kind() != b.kind()) return false;
    switch (a.kind()) {
        case ValueKind::bytes:
            return *a.asBytes() == *b.asBytes();
        case ValueKind::list:
            return a.asList() == b.asList() || *a.asList() == *b.asList();
        case ValueKind::map:
            return a.asMap() == b.asMap() || *a.asMap() == *b.asMap();
        case ValueKind::object:
            return a.asObject() == b.asObject() || a.asObject()->equals(*b.asObject());
        default:
            return a.state_ == b.state_;
    }
}

ValueMap::ValueMap(std::initializer_list<Entry> entries) {
    reserve(entries.size());
    for (auto& entry : entries) set(entry.name, entry.value);
}

std::optional<std::size_t> ValueMap::position(std::string_view name) const {
    if (slots_.empty()) {
        for (std::size_t i = 0; i < entries_.size(); ++i)
            if (entries_[i].name == name) return i;
        return std::nullopt;
    }
    auto mask = slots_.size() - 1;
    for (auto slot = std::hash<std::string_view>{}(name)&mask; slots_[slot] != 0; slot = (slot + 1) & mask)
        if (entries_[slots_[slot] - 1].name == name) return slots_[slot] - 1;
    return std::nullopt;
}

void ValueMap::addToIndex(std::size_t position) {
    auto mask = slots_.size() - 1;
    auto slot = std::hash<std::string_view>{}(entries_[position].name) & mask;
    while (slots_[slot] != 0) slot = (slot + 1) & mask;
    slots_[slot] = static_cast<std::uint32_t>(position + 1);
}

void ValueMap::rebuildIndex() {
    slots_.clear();
    if (entries_.size() <= linearLimit) return;
    std::size_t size = 64;
    while (size < entries_.size() * 2) size *= 2;
    // Twice the room at once, so that a map filled entry by entry rebuilds seldom.
    slots_.assign(size * 2, 0);
    for (std::size_t i = 0; i < entries_.size(); ++i) addToIndex(i);
}

const Value* ValueMap::find(std::string_view name) const {
    auto found = position(name);
    return found ? &entries_[*found].value : nullptr;
}
Value* ValueMap::find(std::string_view name) {
    auto found = position(name);
    return found ? &entries_[*found].value : nullptr;
}

Value ValueMap::valueOf(std::string_view name) const {
    auto found = find(name);
    return found ? *found : Value();
}

Value& ValueMap::operator[](std::string_view name) {
    if (auto found = position(name)) return entries_[*found].value;
    entries_.push_back({std::string(name), Value()});
    if (entries_.size() * 2 > slots_.size() && entries_.size() > linearLimit)
        rebuildIndex();
    else if (!slots_.empty())
        addToIndex(entries_.size() - 1);
    return entries_.back().value;
}

void ValueMap::set(std::string_view name, Value value) { (*this)[name] = std::move(value); }

bool ValueMap::remove(std::string_view name) {
    auto found = position(name);
    if (!found) return false;
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(*found));
    rebuildIndex();
    return true;
}

void ValueMap::merge(const ValueMap& other) {
    for (auto& entry : other) set(entry.name, entry.value);
}

void ValueMap::clear() {
    entries_.clear();
    slots_.clear();
}

bool operator==(const ValueMap& a, const ValueMap& b) {
    if (a.size() != b.size()) return false;
    return std::all_of(a.begin(), a.end(), [&](const ValueMap::Entry& entry) {
        auto other = b.find(entry.name);
        return other && *other == entry.value;
    });
}

}  // namespace tarvo::platform
