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
#include "tarvobase/storage/Mapper.h"

namespace tarvo {

/// The type of the value in the result of `read(row)`.
template <class Read>
using ReadValue = std::remove_cvref_t<decltype(std::declval<std::invoke_result_t<Read, const Row&>>().value())>;

/// The reads and writes that all table classes share. The adapter may be null: then reads return nullopt and writes
/// return false.
class TableAccess {
public:
    TableAccess(std::shared_ptr<DatabaseAdapter> adapter, std::string tableName)
        : adapter_(std::move(adapter)), tableName_(std::move(tableName)) {}

    // Writes return whether they were stored, as those of the adapter do.

    /// Stores rows, and replaces stored rows of the same key. The server owns every schema, and one column that a table
    /// lacks must never lose a row: the column is left out of the write and logged once. A row that has values only in
    /// such columns is not stored, and the call then returns false.
    bool store(std::vector<ValueMap> rows) const;
    /// Does the same for a batch in which a bad row never costs the others. Returns the indexes of the rows that are
    /// not stored, because the table refuses them or has none of their columns. Returns nullopt if none could be
    /// stored.
    std::optional<std::vector<std::size_t>> storeAccepted(const RowSource& rows) const;
    /// Updates rows by a batch. A row sets the cells that it has, in the rows with its values in the columns `keys`.
    /// Leaves columns out as `store` does, and returns as `storeAccepted` does.
    std::optional<std::vector<std::size_t>> updateAccepted(const RowSource& rows,
                                                           const std::vector<std::string>& keys) const;
    /// Replaces all rows of the table in one transaction; after a failure the table is as it was. Leaves columns out as
    /// `store` does; the names of the others are pasted into statements.
    bool replaceAll(std::vector<ValueMap> rows) const;
    std::optional<Rows> fetch(const FetchQuery& query) const {
        return adapter_ ? adapter_->fetchObjects(query) : std::nullopt;
    }
    std::optional<Rows> fetchAll() const { return adapter_ ? adapter_->fetchAllObjects(tableName_) : std::nullopt; }
    bool deleteObjects(const Criteria& criteria) const {
        return adapter_ && adapter_->deleteObjects(tableName_, criteria);
    }
    bool deleteAll() const { return adapter_ && adapter_->deleteAllObjects(tableName_); }
    /// Updates rows. Leaves columns out as `store` does, and those of `keys`, which the criteria fix, as long as others
    /// are left: SQLite keeps a copy of each page that a write to a unique column touches.
    bool update(ValueMap values, const Criteria& criteria, const std::vector<std::string>& keys = {}) const;

    /// Returns `read(row)` for each row, in the order of the rows, or nullopt if there is no answer.
    template <class Read>
    auto valuesOf(const std::optional<Rows>& rows, Read&& read) const
        -> std::optional<std::vector<std::invoke_result_t<Read, const Row&>>> {
        if (!rows) return std::nullopt;
        std::vector<std::invoke_result_t<Read, const Row&>> values;
        values.reserve(rows->size());
        for (auto row : *rows) values.push_back(read(row));
        return values;
    }

    /// Returns the values of the rows that can be read. `read(row)` fails with the name of a column; such a row is left
    /// out, and the column is logged once.
    template <class Read>
    auto readableOf(const std::optional<Rows>& rows, Read&& read) const -> std::optional<std::vector<ReadValue<Read>>> {
        if (!rows) return std::nullopt;
        std::vector<ReadValue<Read>> values;
        values.reserve(rows->size());
        for (auto row : *rows) {
            auto value = read(row);
            if (value)
                values.push_back(std::move(value).value());
            else
                logUnreadable(value.error());
        }
        return values;
    }

    /// Returns the values of all rows, or nullopt if one of them cannot be read.
    template <class Read>
    auto allOrNone(const std::optional<Rows>& rows, Read&& read) const -> std::optional<std::vector<ReadValue<Read>>> {
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

    /// Returns the columns that the table really has, or an empty list if there is no such table.
    std::vector<std::string> columns() const {
        return adapter_ ? adapter_->columnNames(tableName_) : std::vector<std::string>();
    }
    /// Returns whether a column is among `columns`, in any case of letters; one that is not is logged once. An empty
    /// list stands for a missing table. Then every column counts as present, so that the adapter reports what is
    /// wrong.
    bool has(const std::string& column, const std::vector<std::string>& columns) const;

    const std::string& tableName() const { return tableName_; }
    const std::shared_ptr<DatabaseAdapter>& adapter() const { return adapter_; }

private:
    std::vector<std::size_t> placesInTable(const RowSource& rows) const;
    void leaveOutMissingColumns(std::span<ValueMap> rows) const;
    /// Removes rows without values. Returns whether it removed none.
    static bool keepStorable(std::vector<ValueMap>& rows);
    void logUnreadable(const std::string& column) const;
    void logUnreadable(const ParsingError& error) const { logUnreadable(error.failedPath); }

    std::shared_ptr<DatabaseAdapter> adapter_;
    std::string tableName_;
};

/// Base of the table classes that are given their table's name and their adapter.
class DatabasePersistanceClass : public virtual platform::Object {
public:
    DatabasePersistanceClass(std::string tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter)
        : tableName(std::move(tableName)), databaseAdapter(std::move(databaseAdapter)) {}

    std::string tableName;
    std::shared_ptr<DatabaseAdapter> databaseAdapter;

protected:
    TableAccess table() const { return {databaseAdapter, tableName}; }
};

/// Base of the table classes whose table always has the same name. `Bound` is the class that knows it: constants with
/// `TableName`, or a mapper with `tableName`. The adapter belongs to the scope for which the object is made, and may be
/// null.
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

/// Returns the first value, or `noData` if there is no answer or an empty one.
template <class T>
Result<T, ParserError> firstOrNoData(std::optional<std::vector<T>> values) {
    if (!values || values->empty()) return ParserError(ParserError::Case::noData);
    return std::move(values->front());
}

/// Returns the values, or `noData` if there is no answer. An empty list is an answer.
template <class T>
Result<std::vector<T>, ParserError> presentOrNoData(std::optional<std::vector<T>> values) {
    if (!values) return ParserError(ParserError::Case::noData);
    return *std::move(values);
}

/// Returns the values, or `noData` if there is no answer or an empty one.
template <class T>
Result<std::vector<T>, ParserError> filledOrNoData(std::optional<std::vector<T>> values) {
    if (!values || values->empty()) return ParserError(ParserError::Case::noData);
    return *std::move(values);
}

/// Returns the values in groups of the same text, each group in the order of the values. Returns nullopt if there is no
/// answer.
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

/// Returns the first value, or nullopt if there is no answer or an empty one.
template <class T>
std::optional<T> firstOf(std::optional<std::vector<T>> values) {
    if (!values || values->empty()) return std::nullopt;
    return std::move(values->front());
}

/// Returns texts as the values of an `in` condition.
inline ValueList valueList(const std::vector<std::string>& texts) { return ValueList(texts.begin(), texts.end()); }

// The two conditions that table classes use most.
inline Criteria columnIs(std::string_view column, const std::string& value) {
    return Criteria::equalTo(std::string(column), value);
}
inline Criteria columnIn(std::string_view column, const std::vector<std::string>& values) {
    return Criteria::in(std::string(column), valueList(values));
}

/// Returns the query with its rows in the order in which they were stored. Without it, an index that serves the
/// condition decides the order.
inline FetchQuery inStoredOrder(FetchQuery query) {
    query.sortBy = {SortDescriptor::customOrderBy("rowid")};
    return query;
}

/// Returns one row per value, as the constants write it.
template <class T, class Constants>
std::vector<ValueMap> rowsOf(const std::vector<T>& values, const Constants& constants) {
    std::vector<ValueMap> rows;
    rows.reserve(values.size());
    for (auto& value : values) rows.push_back(constants.getDictionary(value));
    return rows;
}

}  // namespace tarvo
