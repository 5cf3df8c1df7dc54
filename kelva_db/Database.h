#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "kelva_db/DatabaseError.h"
#include "kelva_db/DatabaseValue.h"
#include "kelva_db/QueryBuilder.h"
#include "kelva_db/TableDefinition.h"
#include "platform/FunctionRef.h"
#include "platform/Rows.h"

namespace kelva {

using tarvo::Rows;
using tarvo::RowSource;

class Connection;

/// One connection inside a `read`, `write` or `inTransaction` block, and only as long as the block runs. Every
/// operation throws `DatabaseError`. A block runs statements and never calls out: it waits for no other queue and
/// begins no other block of the same database from another thread.
class Database {
public:
    /// Runs one or more statements separated by semicolons. Parameters belong to the first one that has placeholders.
    /// Any number of parameters is accepted, also beyond SQLite's limit for one statement.
    void execute(std::string_view sql, std::span<const Value> parameters = {});
    void execute(const QueryInterfaceProtocol& query);

    /// Runs statements that came from outside, within bounds: they may make, change, drop and fill tables and indexes,
    /// and each may take `timeLimit`. A statement that wants more is left out, and the others run; returns the kinds of
    /// those that were left out. A statement that fails or takes too long throws; the latter ends the transaction.
    std::vector<std::string> executeUntrusted(std::string_view sql, std::chrono::milliseconds timeLimit);

    /// All rows of one statement; an empty result has its column names. Any number of parameters, as above.
    Rows query(std::string_view sql, std::span<const Value> parameters = {});

    void insert(std::string_view intoTable, const ValueMap& values, OnConflict onConflict = OnConflict::replace);
    /// Stores all rows, or none if it throws. Rows of one batch may have different columns: a column that a row lacks
    /// takes its default. Rows alike go in one statement, at the speed of the engine.
    void insert(std::string_view intoTable, const RowSource& rows, OnConflict onConflict = OnConflict::replace);
    void insert(std::string_view intoTable, std::span<const ValueMap> rows,
                OnConflict onConflict = OnConflict::replace);

    /// Updates by a batch: each of its rows sets the cells that it has in those rows of the table whose key columns are
    /// equal to its own. Columns for which a row has no cell are left alone. `keys` are places of the batch; a key for
    /// which a row has no cell does not count, and a row without any key, or with nothing but keys, changes nothing.
    /// Returns the places of the rows that break a rule of the table, which cost themselves alone. Cells must be flat.
    std::vector<std::size_t> update(std::string_view table, const RowSource& rows, std::span<const std::size_t> keys);

    void create(std::string_view table, bool temporary, bool ifNotExists,
                tarvo::platform::FunctionRef<void(TableDefinition&)> block);
    void drop(std::string_view table, bool ifExists);

    /// Column names of a table in their order, empty when there is no such table. Kept until the schema changes.
    std::vector<std::string> columnNames(std::string_view table);

    /// Runs a block inside a savepoint: a throw undoes what the block did, and is rethrown.
    void inSavepoint(tarvo::platform::FunctionRef<void()> block);

    /// Rows changed by the last statement.
    std::int64_t changes() const;

private:
    friend class Connection;
    explicit Database(Connection& connection) : connection_(connection) {}
    Connection& connection_;
};

/// A name as SQL takes it: a plain identifier (also qualified by one dot) as it is, any other in double quotes.
std::string quotedName(std::string_view name);
/// A value as an SQL literal: texts in single quotes with each quote doubled, a NUL inside a text through a cast blob.
std::string literal(const Value& value);

}  // namespace kelva
