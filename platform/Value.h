#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tarvo::platform {

class Value;
class ValueMap;
/// A list with one list in it is written `ValueList{Value(list)}`: from `ValueList{list}` some compilers make a copy.
using ValueList = std::vector<Value>;

/// Bytes as a value, distinct from text.
struct Bytes {
    std::string bytes;
    friend bool operator==(const Bytes&, const Bytes&) = default;
};

/// A part of the program as a value: a record, a list of tags. It travels in maps like any other value, but has no
/// form in JSON and is bound to no statement unless a layer above knows its class.
class ValueObject {
public:
    virtual ~ValueObject() = default;
    virtual bool equals(const ValueObject& other) const { return this == &other; }
    /// Kind of object, for messages. Never its content.
    virtual std::string_view typeName() const = 0;
};

enum class ValueKind : std::uint8_t { null, boolean, integer, real, text, bytes, list, map, object };

/// Name of a kind, for messages that must not show the value itself.
std::string_view kindName(ValueKind kind);

/// One value of a record, a row, a JSON document or a parameter list. Lists, maps and objects are shared between
/// copies and cloned at the first change, so copying a Value is cheap at any depth. Typed reads (`asText` and its
/// kin) never convert: they return nullopt for another kind. Conversions have names that say so (`toReal`). Equality
/// is strict by kind: 1 and 1.0 and true are three different values.
class Value {
public:
    Value() = default;
    Value(std::nullptr_t) {}              // NOLINT: implicit by design
    Value(bool value) : state_(value) {}  // NOLINT
    template <std::integral T>
    requires(!std::same_as<T, bool>) Value(T value) : state_(static_cast<std::int64_t>(value)) {}  // NOLINT
    template <std::floating_point T>
    Value(T value) : state_(static_cast<double>(value)) {}                           // NOLINT
    Value(const char* text) : state_(std::string(text)) {}                           // NOLINT
    Value(std::string_view text) : state_(std::string(text)) {}                      // NOLINT
    Value(std::string text) : state_(std::move(text)) {}                             // NOLINT
    Value(Bytes bytes) : state_(std::make_shared<const Bytes>(std::move(bytes))) {}  // NOLINT
    Value(ValueList list);                                                           // NOLINT
    Value(ValueMap map);                                                             // NOLINT
    Value(std::shared_ptr<const ValueObject> object);                                // NOLINT
    template <class T>
    Value(const std::optional<T>& value) : Value(value ? Value(*value) : Value()) {}  // NOLINT
    template <class T>
    requires std::constructible_from<Value, T>
    explicit Value(const std::vector<T>& items) : Value(ValueList(items.begin(), items.end())) {}

    // The kinds stand in the order of the alternatives.
    ValueKind kind() const { return static_cast<ValueKind>(state_.index()); }
    bool isNull() const { return std::holds_alternative<std::monostate>(state_); }

    std::optional<bool> asBool() const;
    std::optional<std::int64_t> asInteger() const;
    std::optional<double> asReal() const;
    const std::string* asText() const { return std::get_if<std::string>(&state_); }
    const Bytes* asBytes() const;
    const ValueList* asList() const;
    const ValueMap* asMap() const;
    const ValueObject* asObject() const;
    template <class T>
    const T* asObjectOf() const {
        return dynamic_cast<const T*>(asObject());
    }

    /// The list or map for changing; cloned first when another Value shares it. Null for another kind.
    ValueList* mutableList();
    ValueMap* mutableMap();

    /// Copy of the text, or the fallback for any other kind.
    std::string textOr(std::string_view fallback) const;
    /// Integer or real as a real.
    std::optional<double> toReal() const;
    /// Decimal text of a number, "true" or "false" of a Bool, a text as it is; nullopt for the other kinds.
    std::optional<std::string> toText() const;

    friend bool operator==(const Value& a, const Value& b);

private:
    using List = std::shared_ptr<ValueList>;
    using Map = std::shared_ptr<ValueMap>;
    using Object = std::shared_ptr<const ValueObject>;
    std::variant<std::monostate, bool, std::int64_t, double, std::string, std::shared_ptr<const Bytes>, List, Map,
                 Object>
        state_;
};

/// A map from name to value that keeps the order of first insertion and finds by name. One order serves column names
/// and parameters alike. Up to sixteen entries are searched in a row; above that an index is kept.
class ValueMap {
public:
    struct Entry {
        std::string name;
        Value value;
        friend bool operator==(const Entry&, const Entry&) = default;
    };
    using const_iterator = std::vector<Entry>::const_iterator;

    ValueMap() = default;
    ValueMap(std::initializer_list<Entry> entries);

    /// The value of a name, or null when the name is absent. Valid until the map is changed.
    const Value* find(std::string_view name) const;
    Value* find(std::string_view name);
    bool contains(std::string_view name) const { return find(name) != nullptr; }
    /// A copy of the value, or a null Value when the name is absent.
    Value valueOf(std::string_view name) const;

    /// Sets a value; a new name goes to the end, a known one keeps its place.
    void set(std::string_view name, Value value);
    /// The value of a name for writing, added as null when it is absent.
    Value& operator[](std::string_view name);
    /// Removes a name; true when it was there.
    bool remove(std::string_view name);
    /// Sets every entry of the other map; its values win.
    void merge(const ValueMap& other);

    void reserve(std::size_t count) { entries_.reserve(count); }
    void clear();
    std::size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }
    const_iterator begin() const { return entries_.begin(); }
    const_iterator end() const { return entries_.end(); }

    /// Same names with the same values, whatever the order.
    friend bool operator==(const ValueMap& a, const ValueMap& b);

private:
    static constexpr std::size_t linearLimit = 16;
    std::optional<std::size_t> position(std::string_view name) const;
    void rebuildIndex();
    void addToIndex(std::size_t position);

    std::vector<Entry> entries_;
    // Open addressing over positions + 1, a power of two at most half full; empty up to `linearLimit` entries.
    std::vector<std::uint32_t> slots_;
};

}  // namespace tarvo::platform

namespace tarvo {
using platform::Bytes;
using platform::Value;
using platform::ValueKind;
using platform::ValueList;
using platform::ValueMap;
using platform::ValueObject;
}  // namespace tarvo
