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

/// One property of an object in memory, or what a filter compares it with. Two are equal only when they are of one type
/// and one value: the text "true" is not the Bool, and the raw text of an enumeration is not its case.
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

    /// A member of a value object. An absent one is the empty text, as an unknown key is.
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

/// What a table in memory holds. Immutable once it is stored.
class InMemeoryDatabaseStorable {
public:
    virtual ~InMemeoryDatabaseStorable() = default;
    /// A member by its plain key; the empty text for a key that the object does not know.
    virtual InMemoryPropertyValue operator[](std::string_view key) const = 0;
};

/// A value object as an object in memory.
template <class T>
struct InMemoryObject final : InMemeoryDatabaseStorable {
    explicit InMemoryObject(T value) : value(std::move(value)) {}
    InMemoryPropertyValue operator[](std::string_view key) const override { return propertyForKey(value, key); }
    const T value;
};

/// The key of a field in memory: its plain key where the value says whose keys these are (`T::InMemoryKeys`), otherwise
/// the name of its member.
template <class T, class Field>
std::optional<std::string_view> inMemoryKey(const Field& field) {
    if constexpr (!requires { typename T::InMemoryKeys; })
        return field.name;
    else if constexpr (IsStoredField<Field>)
        return typename T::InMemoryKeys().*field.key;
    else
        return std::nullopt;
}

/// The member under a key; the empty text when there is none.
template <Described T>
InMemoryPropertyValue propertyForKey(const T& value, std::string_view key) {
    InMemoryPropertyValue property("");
    auto visit = [&](const auto& field) {
        if (inMemoryKey<T>(field) == key) property = InMemoryPropertyValue::of(value.*field.pointer);
    };
    T::fields().apply([&](const auto&... fields) { (visit(fields), ...); });
    return property;
}

/// Tables of objects in memory, one set per owner. From any thread; each operation sees and leaves whole lists, and
/// neither fails nor reports: a missing table is an absent list.
class InMemoryDatabaseAdapter : public virtual platform::Object {
public:
    using Object = std::shared_ptr<const InMemeoryDatabaseStorable>;
    using Objects = std::vector<Object>;
    /// All of them must hold. None at all matches every object.
    using ColumnValues = std::vector<std::pair<std::string, InMemoryPropertyValue>>;

    /// Whose tables the operations work on at this moment: an account, or an account in one of its organisations.
    virtual std::string owner() const = 0;
    /// Returns false while somebody else than the owner is at work: then reads are absent and writes do nothing.
    virtual bool isOwnerAtWork() const = 0;

    /// Adds at the end. Nothing is looked at: an object inserted twice is there twice.
    virtual void insertInto(const std::string& tableName, Object object) = 0;
    virtual void insertInto(const std::string& tableName, const Objects& objects) = 0;
    /// Puts `object` in the place of every object that matches. None is added when none does.
    virtual void update(const std::string& tableName, Object object, const ColumnValues& columnValues) = 0;
    /// The first `limit` objects that match, in the order of the table. A limit of 0 or less gives an empty list.
    virtual std::optional<Objects> fetchObjects(const std::string& tableName, const ColumnValues& columnValues,
                                                std::int64_t limit) = 0;
    /// The whole table: the limit is not looked at.
    virtual std::optional<Objects> fetchAllObjects(const std::string& fromTable, std::int64_t limit) = 0;
    virtual std::optional<Objects> fetchObjects(const std::string& tableName, const ColumnValues& columnValues) = 0;
    virtual std::optional<Objects> fetchAllObjects(const std::string& tableName) = 0;
    virtual void deleteObjects(const std::string& tableName, const ColumnValues& columnValues) = 0;
    /// Leaves an empty table, which is not an absent one.
    virtual void deleteAllObjects(const std::string& tableName) = 0;

    /// Reads and changes the table of an owner in one step, so that nobody else sees or changes it meanwhile, whoever
    /// is at work. The function must not use the adapter.
    virtual void change(const std::string& tableName, const std::string& owner,
                        platform::FunctionRef<void(std::optional<Objects>& table)> change) = 0;
};

}  // namespace tarvo
