#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/database_layer/DatabaseAdapter.h"

namespace tarvo {

/// A table that the library makes if the database lacks it. The server owns the schema of its data; a table of the
/// user's unsent changes must not depend on it. Any thread may use it. The adapter may be null: then reads return
/// nullopt and writes return false.
class EnsuredTable {
public:
    struct Column {
        std::string name;
        std::string declaration;  ///< SQL, such as "INTEGER"
    };
    struct Declaration {
        std::vector<Column> columns;
        std::string keys;  ///< SQL, such as "UNIQUE (id)"; may be empty
        /// Columns that get an index of their own. Queries on a table of the server do not rely on the server's.
        std::vector<std::string> indexed = {};
    };

    EnsuredTable(std::shared_ptr<DatabaseAdapter> adapter, const std::string& name, Declaration declaration);

    // Writes return whether they were stored. Each makes the table first, or adds the columns that it lacks.

    /// Does only that, for statements that also read or write this table beside another one.
    bool ensure() const;
    /// Also makes the indexes that the table lacks. Call it once per opened database.
    bool ensureIndexes() const;
    bool execute(const std::vector<DatabaseAdapter::Statement>& statements) const;
    bool execute(const Query& query) const { return execute({{query.sql(), query.parameters()}}); }
    /// Stores rows in place of those with the same value in the column `key`, whatever keys the table has. The rows
    /// need not have the same columns.
    bool replace(const std::string& key, std::vector<ValueMap> rows) const;
    bool update(ValueMap values, Criteria criteria) const {
        return execute(UpdateQuery(name_, values).filter(criteria));
    }
    bool remove(Criteria criteria) const { return execute(DeleteQuery(name_, criteria)); }

    /// Makes an index over an expression, unless the table has one of this name. `suffix` is appended to the name of
    /// the table.
    bool ensureIndex(const std::string& suffix, const std::string& expression) const;

    /// Returns no row if there is no such table, and nullopt if the database cannot be read.
    std::optional<Rows> fetch(const FetchQuery& query) const;
    std::optional<Rows> fetch(Criteria criteria) const { return fetch(FetchQuery(name_, criteria)); }

    const std::shared_ptr<DatabaseAdapter>& adapter() const { return adapter_; }
    /// The name as statements take it.
    const std::string& name() const { return name_; }

private:
    std::vector<DatabaseAdapter::Statement> indexStatements() const;

    std::shared_ptr<DatabaseAdapter> adapter_;
    std::string plainName_, name_;
    Declaration declaration_;
};

}  // namespace tarvo
