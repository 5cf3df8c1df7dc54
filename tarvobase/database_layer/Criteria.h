#pragma once

#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "tarvobase/database_layer/Query.h"

namespace tarvo {

/// A condition of a WHERE clause. A column is a name that is pasted unchanged; a value is bound.
class Criteria final : public Query {
public:
    enum class Case {
        equalTo,
        notEqualTo,
        greaterThan,
        lessThan,
        greaterThanOrEqualTo,
        lessThanOrEqualTo,
        isNull,
        isNotNull,
        between,
        exists,
        in,
        like,
        notBetween,
        notExists,
        notIn,
        notLike,
        custom,
        and_,
        or_
    };

    /// The right side of a comparison: another column, by name, or a value.
    class ColumnType {
    public:
        static ColumnType column(std::string name) { return ColumnType(true, Value(std::move(name))); }
        static ColumnType value(Value value) { return ColumnType(false, std::move(value)); }
        /// Takes a plain value, so that `equalTo("id", 7)` reads as it should.
        ColumnType(Value value) : ColumnType(false, std::move(value)) {}  // NOLINT: implicit
        template <class T>
        requires(std::constructible_from<Value, T> && !std::same_as<std::remove_cvref_t<T>, Value> &&
                 !std::same_as<std::remove_cvref_t<T>, ColumnType>) ColumnType(T&& value)
            : ColumnType(false, Value(std::forward<T>(value))) {}  // NOLINT: implicit

        bool isColumn() const { return isColumn_; }
        const Value& held() const { return held_; }

    private:
        ColumnType(bool isColumn, Value held) : isColumn_(isColumn), held_(std::move(held)) {}
        bool isColumn_;
        Value held_;
    };

    enum class StringCriteria { startsWith, endsWith, contains };

    /// The word that joins the entries of `and` and `or`.
    enum class Separator { and_, or_ };

    static Criteria equalTo(std::string column, ColumnType right) {
        return compare(Case::equalTo, std::move(column), std::move(right));
    }
    static Criteria notEqualTo(std::string column, ColumnType right) {
        return compare(Case::notEqualTo, std::move(column), std::move(right));
    }
    static Criteria greaterThan(std::string column, ColumnType right) {
        return compare(Case::greaterThan, std::move(column), std::move(right));
    }
    static Criteria lessThan(std::string column, ColumnType right) {
        return compare(Case::lessThan, std::move(column), std::move(right));
    }
    static Criteria greaterThanOrEqualTo(std::string column, ColumnType right) {
        return compare(Case::greaterThanOrEqualTo, std::move(column), std::move(right));
    }
    static Criteria lessThanOrEqualTo(std::string column, ColumnType right) {
        return compare(Case::lessThanOrEqualTo, std::move(column), std::move(right));
    }
    static Criteria isNull(std::string column) { return {Case::isNull, std::move(column), {}}; }
    static Criteria isNotNull(std::string column) { return {Case::isNotNull, std::move(column), {}}; }
    static Criteria between(std::string column, Value lower, Value upper) {
        return {Case::between, std::move(column), {std::move(lower), std::move(upper)}};
    }
    static Criteria notBetween(std::string column, Value lower, Value upper) {
        return {Case::notBetween, std::move(column), {std::move(lower), std::move(upper)}};
    }
    static Criteria exists(std::string sql, ValueList values) {
        return {Case::exists, std::move(sql), std::move(values)};
    }
    static Criteria notExists(std::string sql, ValueList values) {
        return {Case::notExists, std::move(sql), std::move(values)};
    }
    /// Tests for a value of a list. An empty list renders "()", which matches no row.
    static Criteria in(std::string column, ValueList values) {
        return {Case::in, std::move(column), std::move(values)};
    }
    static Criteria notIn(std::string column, ValueList values) {
        return {Case::notIn, std::move(column), std::move(values)};
    }
    /// Compares with a pattern. Percent signs and underscores of the value keep their meaning for LIKE.
    static Criteria like(std::string column, std::string_view value, StringCriteria pattern) {
        return {Case::like, std::move(column), {likeText(value, pattern)}};
    }
    static Criteria notLike(std::string column, std::string_view value, StringCriteria pattern) {
        return {Case::notLike, std::move(column), {likeText(value, pattern)}};
    }
    static Criteria custom(std::string sql, std::optional<ValueList> parameters = std::nullopt) {
        return {Case::custom, std::move(sql), std::move(parameters).value_or(ValueList())};
    }
    static Criteria and_(std::vector<Criteria> entries) { return {Case::and_, std::move(entries)}; }
    static Criteria or_(std::vector<Criteria> entries) { return {Case::or_, std::move(entries)}; }

    /// Joins one entry per pair by `and`, in the map's order: `in` for a list, `equalTo` for any other value.
    static Criteria equals(const ValueMap& columnValues);

    Case which() const { return case_; }
    std::string sql() const override;
    ValueList parameters() const override;

private:
    Criteria(Case which, std::string text, ValueList values)
        : case_(which), text_(std::move(text)), values_(std::move(values)) {}
    Criteria(Case which, std::vector<Criteria> entries) : case_(which), entries_(std::move(entries)) {}
    static Criteria compare(Case which, std::string column, ColumnType right);
    static std::string likeText(std::string_view value, StringCriteria pattern);

    void appendSql(std::string& out) const;
    void appendParameters(ValueList& out) const;

    Case case_;
    std::string text_;         // the column, or the SQL of exists and custom
    std::string rightColumn_;  // the other side of a comparison; empty if that is a value
    ValueList values_;
    std::vector<Criteria> entries_;
};

/// Returns "?,?,?" for three, the empty text for none.
std::string placeholders(std::size_t count);

/// Joins the SQL of the entries by " AND ".
std::string joinedSql(std::span<const Criteria> criterias);
/// Appends the parameters of the entries in the same order.
void appendParameters(ValueList& parameters, std::span<const Criteria> criterias);

}  // namespace tarvo
