#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/network_layer/ParserError.h"

namespace tarvo {

/// What `read(row)` gives when it succeeds.
template <class Read>
using ReadValue = std::remove_cvref_t<decltype(std::declval<std::invoke_result_t<Read, const Row&>>().value())>;

/// What every table class does with its table, over an adapter that may be absent: then reads are absent and writes do
/// nothing.
class TableAccess {
public:
    TableAccess(std::shared_ptr<DatabaseAdapter> adapter, std::string tableName)
        : adapter_(std::move(adapter)), tableName_(std::move(tableName)) {}

    // Writes return whether they were stored, as the adapter does; without an adapter they return false.

    /// Stores rows, replacing those of the same key. The server owns every schema, and one column that its table lacks
    /// must never lose a row: such a column is left out of the write, and logged once. A row that has values only in
    /// such columns is not stored, and the call then returns false.
    bool store(std::vector<ValueMap> rows) const;
    /// The same for a batch in which a bad row never costs the others. Returns the places of the rows that are not
    /// stored, because the table refuses them or has none of their columns; returns nullopt if nothing could be stored.
    std::optional<std::vector<std::size_t>> storeAccepted(const RowSource& rows) const;
    /// Replaces the whole table by these rows: one transaction, and a failure leaves it as it was. Leaves columns out
    /// as `store` does; the names of the others are pasted into statements.
    bool replaceAll(std::vector<ValueMap> rows) const;
    std::optional<Rows> fetch(const FetchQuery& query) const {
        return adapter_ ? adapter_->fetchObjects(query) : std::nullopt;
    }
    std::optional<Rows> fetchAll() const { return adapter_ ? adapter_->fetchAllObjects(tableName_) : std::nullopt; }
    bool deleteObjects(const Criteria& criteria) const {
        return adapter_ && adapter_->deleteObjects(tableName_, criteria);
    }
    bool deleteAll() const { return adapter_ && adapter_->deleteAllObjects(tableName_); }
    /// Updates rows. Leaves columns out as `store` does.
    bool update(ValueMap values, const Criteria& criteria) const;

    /// `read(row)` of every row, in row order. An absent answer is absent.
    template <class Read>
    auto valuesOf(const std::optional<Rows>& rows, Read&& read) const
        -> std::optional<std::vector<std::invoke_result_t<Read, const Row&>>> {
        if (!rows) return std::nullopt;
        std::vector<std::invoke_result_t<Read, const Row&>> values;
        values.reserve(rows->size());
        for (auto row : *rows) values.push_back(read(row));
        return values;
    }

    /// The same for a `read(row)` that may fail with the name of a column: a damaged row is left out and its siblings
    /// stay. The column is logged once.
    template <class Read>
    auto undamagedOf(const std::optional<Rows>& rows, Read&& read) const
        -> std::optional<std::vector<ReadValue<Read>>> {
        if (!rows) return std::nullopt;
        std::vector<ReadValue<Read>> values;
        values.reserve(rows->size());
        for (auto row : *rows) {
            auto value = read(row);
            if (value)
                values.push_back(std::move(value).value());
            else
                noteDamaged(value.error());
        }
        return values;
    }

    /// The same for a read that one damaged row ends: then the answer is absent.
    template <class Read>
    auto wholeOf(const std::optional<Rows>& rows, Read&& read) const -> std::optional<std::vector<ReadValue<Read>>> {
        if (!rows) return std::nullopt;
        std::vector<ReadValue<Read>> values;
        values.reserve(rows->size());
        for (auto row : *rows) {
            auto value = read(row);
            if (!value) return std::nullopt;
            values.push_back(std::move(value).value());
        }
        return values;
    }

    /// The columns that the table really has; empty without a table.
    std::vector<std::string> columns() const {
        return adapter_ ? adapter_->columnNames(tableName_) : std::vector<std::string>();
    }
    /// Whether a column is among those that `columns` gave, in any case of letters; one that is not is logged once.
    /// Without a table every column counts as there, so that the adapter says what is wrong.
    bool has(const std::string& column, const std::vector<std::string>& columns) const;

    const std::string& tableName() const { return tableName_; }
    const std::shared_ptr<DatabaseAdapter>& adapter() const { return adapter_; }

private:
    void leaveOutMissingColumns(std::span<ValueMap> rows) const;
    /// Removes the rows that the table has no column for. Returns whether it kept all of them.
    static bool keepStorable(std::vector<ValueMap>& rows);
    void noteDamaged(const std::string& column) const;

    std::shared_ptr<DatabaseAdapter> adapter_;
    std::string tableName_;
};

/// Base of the table classes that are given their adapter.
class DatabasePersistanceClass : public virtual platform::Object {
public:
    DatabasePersistanceClass(std::string tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter)
        : tableName(std::move(tableName)), databaseAdapter(std::move(databaseAdapter)) {}

    std::string tableName;
    std::shared_ptr<DatabaseAdapter> databaseAdapter;

protected:
    TableAccess table() const { return {databaseAdapter, tableName}; }
};

/// Base of the table classes whose table has one name. `Bound` is the class that knows it: constants with `TableName`
/// or a mapper with `tableName`. The adapter is that of the scope for which the object is made; it may be null.
template <class Bound>
class StaticDatabasePersistanceClass : public virtual platform::Object {
public:
    explicit StaticDatabasePersistanceClass(std::shared_ptr<DatabaseAdapter> databaseAdapter)
        : databaseAdapter_(std::move(databaseAdapter)) {}

protected:
    TableAccess table() const { return {databaseAdapter_, std::string(nameOf(Bound()))}; }

private:
    static std::string_view nameOf(const auto& bound) {
        if constexpr (requires { bound.TableName; })
            return bound.TableName;
        else
            return bound.tableName;
    }

    const std::shared_ptr<DatabaseAdapter> databaseAdapter_;
};

/// The first value, or `noData` for an absent or empty answer.
template <class T>
Result<T, ParserError> firstOrNoData(std::optional<std::vector<T>> values) {
    if (!values || values->empty()) return ParserError(ParserError::Case::noData);
    return std::move(values->front());
}

/// The values, or `noData` for an absent answer; an empty list is an answer.
template <class T>
Result<std::vector<T>, ParserError> presentOrNoData(std::optional<std::vector<T>> values) {
    if (!values) return ParserError(ParserError::Case::noData);
    return *std::move(values);
}

/// The values, or `noData` for an absent or empty answer.
template <class T>
Result<std::vector<T>, ParserError> filledOrNoData(std::optional<std::vector<T>> values) {
    if (!values || values->empty()) return ParserError(ParserError::Case::noData);
    return *std::move(values);
}

/// The values by a text of each, in their order; an absent answer is absent.
template <class T>
std::optional<std::unordered_map<std::string, std::vector<T>>> groupedBy(std::string T::*key,
                                                                         std::optional<std::vector<T>> values) {
    if (!values) return std::nullopt;
    std::unordered_map<std::string, std::vector<T>> groups;
    for (auto& value : *values) {
        auto& group = groups[value.*key];
        group.push_back(std::move(value));
    }
    return groups;
}

/// The first value; absent for an absent or empty answer.
template <class T>
std::optional<T> firstOf(std::optional<std::vector<T>> values) {
    if (!values || values->empty()) return std::nullopt;
    return std::move(values->front());
}

/// Texts as the values of an `in` condition.
inline ValueList valueList(const std::vector<std::string>& texts) { return ValueList(texts.begin(), texts.end()); }

/// The two conditions that table classes ask by.
inline Criteria columnIs(std::string_view column, const std::string& value) {
    return Criteria::equalTo(std::string(column), value);
}
inline Criteria columnIn(std::string_view column, const std::vector<std::string>& values) {
    return Criteria::in(std::string(column), valueList(values));
}

/// The query with its rows in the order in which they were stored; without this an index that serves the condition
/// gives its own order.
inline FetchQuery inStoredOrder(FetchQuery query) {
    query.sortBy = {SortDescriptor::customOrderBy("rowid")};
    return query;
}

/// The rows of values as the constants write them.
template <class T, class Constants>
std::vector<ValueMap> rowsOf(const std::vector<T>& values, const Constants& constants) {
    std::vector<ValueMap> rows;
    rows.reserve(values.size());
    for (auto& value : values) rows.push_back(constants.getDictionary(value));
    return rows;
}

}  // namespace tarvo
