#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "platform/Rows.h"
#include "platform/Value.h"

namespace kelva {

using tarvo::Value;
using tarvo::ValueList;
using tarvo::ValueMap;

/// What SQLite itself stores.
class DatabaseValue {
public:
    DatabaseValue() = default;
    explicit DatabaseValue(std::int64_t integer) : state_(integer) {}
    explicit DatabaseValue(double real) : state_(real) {}
    static DatabaseValue text(std::string value) {
        return DatabaseValue(State(std::in_place_index<3>, std::move(value)));
    }
    static DatabaseValue blob(std::string bytes) {
        return DatabaseValue(State(std::in_place_index<4>, tarvo::Bytes{std::move(bytes)}));
    }

    bool isNull() const { return state_.index() == 0; }
    std::optional<std::int64_t> asInteger() const;
    std::optional<double> asReal() const;
    const std::string* asText() const { return std::get_if<std::string>(&state_); }
    const tarvo::Bytes* asBlob() const { return std::get_if<tarvo::Bytes>(&state_); }
    /// The same as a Value of the program.
    Value value() const;
    friend bool operator==(const DatabaseValue&, const DatabaseValue&) = default;

private:
    using State = std::variant<std::monostate, std::int64_t, double, std::string, tarvo::Bytes>;
    explicit DatabaseValue(State state) : state_(std::move(state)) {}
    State state_;
};

/// Implemented by objects of the program (`tarvo::ValueObject`) that know a stored form of their own. All other kinds
/// of Value have a fixed one; see `databaseValue`.
class DatabaseValueConvertible {
public:
    virtual ~DatabaseValueConvertible() = default;
    virtual DatabaseValue databaseValue() const = 0;
};

/// The stored form of a Value: null, integer, real, text and bytes as they are, a Bool as 0 or 1, a list as its JSON
/// text (null when it holds something that JSON cannot say), a map as a blob of its JSON bytes (an empty blob then).
/// Returns nullopt for an object that is not a `DatabaseValueConvertible`: such a value cannot be bound.
std::optional<DatabaseValue> databaseValue(const Value& value);

/// Whether every parameter can be bound.
bool allConvertible(std::span<const Value> parameters);

/// A list or map that was stored as a column: from any value a text is read as JSON, from a `DatabaseValue` a blob.
/// Returns nullopt for anything else.
std::optional<Value> fromDatabaseValue(const Value& value);
std::optional<Value> fromDatabaseValue(const DatabaseValue& value);

}  // namespace kelva
