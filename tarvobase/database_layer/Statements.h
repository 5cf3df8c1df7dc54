#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/database_layer/Criteria.h"
#include "tarvobase/database_layer/SortDescriptor.h"

namespace tarvo {

/// A SELECT statement. `count` of the adapter overwrites the `columns` of the query that it is given.
class FetchQuery final : public Query {
public:
    explicit FetchQuery(std::string tableName) : tableName(std::move(tableName)) {}
    FetchQuery(std::string tableName, Criteria criteria);
    /// Selects by the values of columns. An absent map adds no condition; an empty one adds "()".
    FetchQuery(std::string tableName, const std::optional<ValueMap>& columnValues);
    FetchQuery(std::string tableName, const std::optional<ValueMap>& columnValues, std::vector<SortDescriptor> sortBy);
    FetchQuery(std::string tableName, const std::optional<ValueMap>& columnValues,
               const std::vector<std::string>& sortedByColumns);

    FetchQuery& filter(const ValueMap& columnValues);
    FetchQuery& filter(Criteria criteria);
    /// Sorts ascending by these columns, in place of any former order.
    FetchQuery& sortedBy(const std::vector<std::string>& names);

    std::string sql() const override;
    ValueList parameters() const override;
    /// Returns its `sql`.
    std::string description() const { return sql(); }

    std::string tableName;
    std::vector<std::string> columns;  ///< empty means all
    std::vector<Criteria> criterias;
    std::vector<SortDescriptor> sortBy;
    std::optional<std::int64_t> limit;
    std::optional<std::int64_t> offset;
};

class InsertQuery final : public Query {
public:
    InsertQuery(std::string tableName, ValueMap values) : tableName(std::move(tableName)), values(std::move(values)) {}
    std::string sql() const override;
    ValueList parameters() const override;

    std::string tableName;
    bool replaceOnConflict = true;
    ValueMap values;
};

class UpdateQuery final : public Query {
public:
    UpdateQuery(std::string tableName, ValueMap columnValues)
        : tableName(std::move(tableName)), columnValues(std::move(columnValues)) {}
    UpdateQuery(std::string tableName, ValueMap columnValues, const ValueMap& criteria);

    /// Adds values; a later value for a column replaces the earlier one.
    UpdateQuery& set(const ValueMap& values);
    UpdateQuery& filter(const ValueMap& columnValues);
    UpdateQuery& filter(Criteria criteria);
    std::string sql() const override;
    ValueList parameters() const override;

    std::string tableName;
    ValueMap columnValues;
    std::vector<Criteria> criterias;
    bool ignoreOnError = false;
};

class DeleteQuery final : public Query {
public:
    explicit DeleteQuery(std::string tableName) : tableName(std::move(tableName)) {}
    DeleteQuery(std::string tableName, const ValueMap& criteria);
    DeleteQuery(std::string tableName, Criteria criteria);

    DeleteQuery& filter(const ValueMap& columnValues);
    DeleteQuery& filter(Criteria criteria);
    std::string sql() const override;
    ValueList parameters() const override;

    std::string tableName;
    std::vector<Criteria> criterias;
};

/// A statement that copies rows of one table into another: INSERT ... SELECT.
class CopyQuery final : public Query {
public:
    CopyQuery(std::string sourceTable, std::string destinationTable, std::optional<std::int64_t> limit = std::nullopt)
        : sourceTable(std::move(sourceTable)), destinationTable(std::move(destinationTable)), limit(limit) {}

    CopyQuery& filter(const ValueMap& columnValues);
    CopyQuery& filter(Criteria criteria);
    std::string sql() const override;
    ValueList parameters() const override;

    std::string sourceTable;
    std::string destinationTable;
    ValueMap columnMap;  ///< destination column to source column, as text; empty means all columns
    std::vector<Criteria> criterias;
    std::optional<std::int64_t> limit;
    std::optional<std::int64_t> offset;
};

/// A statement of a given text and its parameters, used as they stand.
class RawQuery final : public Query {
public:
    RawQuery(std::string sql, ValueList parameters) : sql_(std::move(sql)), parameters_(std::move(parameters)) {}
    std::string sql() const override { return sql_; }
    ValueList parameters() const override { return parameters_; }

private:
    std::string sql_;
    ValueList parameters_;
};

}  // namespace tarvo
