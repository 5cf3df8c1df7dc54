#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/network_layer/ParserError.h"

namespace tarvo {

/// What every table class does with its table, over an adapter that may be absent: then reads are absent and writes do
/// nothing.
class TableAccess {
public:
    TableAccess(std::shared_ptr<DatabaseAdapter> adapter, std::string tableName)
        : adapter_(std::move(adapter)), tableName_(std::move(tableName)) {}

    /// Stores rows, replacing those of the same key. The server owns every schema, and one column that its table lacks
    /// must never lose a row: such a column is left out of the write, and logged once.
    void store(std::vector<ValueMap> rows) const;
    std::optional<Rows> fetch(const FetchQuery& query) const {
        return adapter_ ? adapter_->fetchObjects(query) : std::nullopt;
    }
    std::optional<Rows> fetchAll() const { return adapter_ ? adapter_->fetchAllObjects(tableName_) : std::nullopt; }
    void deleteObjects(const Criteria& criteria) const {
        if (adapter_) adapter_->deleteObjects(tableName_, criteria);
    }
    void deleteAll() const {
        if (adapter_) adapter_->deleteAllObjects(tableName_);
    }
    /// Leaves columns out as `store` does.
    void update(ValueMap values, const Criteria& criteria) const;

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

    const std::string& tableName() const { return tableName_; }
    const std::shared_ptr<DatabaseAdapter>& adapter() const { return adapter_; }

private:
    void leaveOutMissingColumns(std::span<ValueMap> rows) const;

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

/// Base of the table classes that ask the configuration for the adapter at each call, so that they may be made before a
/// database is open and outlive a change of database. `Bound` is the class that knows the table's name: constants with
/// `TableName` or a mapper with `tableName`.
template <class Bound>
class StaticDatabasePersistanceClass : public virtual platform::Object {
protected:
    TableAccess table() const {
        return {CommonConfigration::sharedInstance().databaseAdapter.get(), std::string(nameOf(Bound()))};
    }

private:
    static std::string_view nameOf(const auto& bound) {
        if constexpr (requires { bound.TableName; })
            return bound.TableName;
        else
            return bound.tableName;
    }
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

/// Texts as the values of an `in` condition.
inline ValueList valueList(const std::vector<std::string>& texts) { return ValueList(texts.begin(), texts.end()); }

}  // namespace tarvo
