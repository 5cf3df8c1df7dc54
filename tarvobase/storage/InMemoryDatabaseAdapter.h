#pragma once

#include <concepts>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <typeindex>
#include <utility>
#include <vector>

#include "platform/FunctionRef.h"
#include "platform/Object.h"
#include "platform/Value.h"
#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

/// A property of an object in memory, or the value with which a filter compares it. Two of them are equal only if they
/// have the same type and the same value: the text "true" does not equal the Bool, nor does the raw text of an
/// enumeration equal its case.
class InMemoryPropertyValue {
public:
    InMemoryPropertyValue(const char* text) : InMemoryPropertyValue(std::string(text)) {}       // NOLINT: implicit
    InMemoryPropertyValue(std::string_view text) : InMemoryPropertyValue(std::string(text)) {}  // NOLINT
    InMemoryPropertyValue(std::string text) : type_(typeid(std::string)), value_(std::move(text)) {}  // NOLINT
    InMemoryPropertyValue(bool value) : type_(typeid(bool)), value_(value) {}                         // NOLINT
    template <std::integral T>
    requires(!std::same_as<T, bool>) InMemoryPropertyValue(T value)
        : type_(typeid(std::int64_t)), value_(value) {}  // NOLINT
    template <Enumerated E>
    InMemoryPropertyValue(E value) : type_(typeid(E)), value_(rawText(value)) {}  // NOLINT

    /// Returns the property for a member of a value object: the empty text if the member is absent.
    template <class T>
    static InMemoryPropertyValue of(const T& member) {
        if constexpr (std::constructible_from<InMemoryPropertyValue, const T&>)
            return InMemoryPropertyValue(member);
        else
            return InMemoryPropertyValue(typeid(T), Value(member));
    }
    template <class T>
    static InMemoryPropertyValue of(const std::optional<T>& member) {
        return member ? of(*member) : InMemoryPropertyValue("");
    }

    bool isEqual(const std::optional<InMemoryPropertyValue>& other) const {
        return other && type_ == other->type_ && value_ == other->value_;
    }

private:
    InMemoryPropertyValue(std::type_index type, Value value) : type_(type), value_(std::move(value)) {}
    std::type_index type_;
    Value value_;
};

/// An object in a table in memory. It does not change after it has been stored.
class InMemeoryDatabaseStorable {
public:
    virtual ~InMemeoryDatabaseStorable() = default;
    /// Returns a member by its plain key, or the empty text if the object has no such member.
    virtual InMemoryPropertyValue operator[](std::string_view key) const = 0;
};

/// A value object as an object in memory.
template <class T>
struct InMemoryObject final : InMemeoryDatabaseStorable {
    explicit InMemoryObject(T value) : value(std::move(value)) {}
    InMemoryPropertyValue operator[](std::string_view key) const override { return propertyForKey(value, key); }
    const T value;
};

/// Returns the key of a field in memory: its plain key if the value names the constants of the keys
/// (`T::InMemoryKeys`), otherwise the name of its member.
template <class T, class Field>
std::optional<std::string_view> inMemoryKey(const Field& field) {
    if constexpr (!requires { typename T::InMemoryKeys; })
        return field.name;
    else if constexpr (IsStoredField<Field>)
        return typename T::InMemoryKeys().*field.key;
    else
        return std::nullopt;
}

/// Returns the member under a key, or the empty text if there is none.
template <Described T>
InMemoryPropertyValue propertyForKey(const T& value, std::string_view key) {
    InMemoryPropertyValue property("");
    auto visit = [&](const auto& field) {
        if (inMemoryKey<T>(field) == key) property = InMemoryPropertyValue::of(value.*field.pointer);
    };
    T::fields().apply([&](const auto&... fields) { (visit(fields), ...); });
    return property;
}

/// Tables of objects in memory, one set per owner. They may be used from any thread. Each operation sees and leaves
/// complete lists, and none fails. Reads of a missing table return nullopt.
class InMemoryDatabaseAdapter : public virtual platform::Object {
public:
    using Object = std::shared_ptr<const InMemeoryDatabaseStorable>;
    using Objects = std::vector<Object>;
    /// All of the conditions must hold. An empty list matches every object.
    using ColumnValues = std::vector<std::pair<std::string, InMemoryPropertyValue>>;

    /// Returns the owner of the tables on which the operations work: an account, or an account in an organisation.
    virtual std::string owner() const = 0;
    /// Returns the account of the owner.
    virtual std::string account() const = 0;
    /// Returns false while another owner is current. Reads then return nullopt, and writes do nothing.
    virtual bool isOwnerCurrent() const = 0;

    /// Adds at the end, also an object that the table has already.
    virtual void insertInto(const std::string& tableName, Object object) = 0;
    virtual void insertInto(const std::string& tableName, const Objects& objects) = 0;
    /// Puts `object` in place of every object that matches. Adds none if there is no such object.
    virtual void update(const std::string& tableName, Object object, const ColumnValues& columnValues) = 0;
    /// Returns the first `limit` objects that match, in the order of the table. A limit of 0 or less gives an empty
    /// list.
    virtual std::optional<Objects> fetchObjects(const std::string& tableName, const ColumnValues& columnValues,
                                                std::int64_t limit) = 0;
    /// Returns the whole table, whatever the limit.
    virtual std::optional<Objects> fetchAllObjects(const std::string& fromTable, std::int64_t limit) = 0;
    virtual std::optional<Objects> fetchObjects(const std::string& tableName, const ColumnValues& columnValues) = 0;
    virtual std::optional<Objects> fetchAllObjects(const std::string& tableName) = 0;
    virtual void deleteObjects(const std::string& tableName, const ColumnValues& columnValues) = 0;
    /// Leaves an empty table, which is different from a missing one.
    virtual void deleteAllObjects(const std::string& tableName) = 0;

    /// Reads and changes the table of an owner in one step, whether or not the owner is current. Nobody else sees or
    /// changes the table meanwhile. `change` must not use the adapter.
    virtual void change(const std::string& tableName, const std::string& owner,
                        platform::FunctionRef<void(std::optional<Objects>& table)> change) = 0;
};

}  // namespace tarvo
