#include "kelva_db/Database.h"

#include <sqlite3.h>

#include <algorithm>
#include <optional>

#include "kelva_db/internal/Connection.h"
#include "kelva_db/internal/Execution.h"
#include "kelva_db/internal/Sql.h"
#include "kelva_db/internal/Sqlite.h"
#include "platform/Text.h"

namespace kelva {

namespace {

std::string insertWords(std::string_view table, OnConflict onConflict) {
    std::string words = "INSERT";
    if (onConflict == OnConflict::replace) words += " OR REPLACE";
    if (onConflict == OnConflict::ignore) words += " OR IGNORE";
    return words + " INTO " + quotedName(table);
}

/// "INSERT ... (a,b) SELECT c0,c1 FROM kelva_rows_16"
std::string batchStatement(std::string_view table, std::span<const std::string> columns, OnConflict onConflict) {
    auto rowsTable = ListTables::rowsTableFor(columns.size());
    std::string names, cells;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        std::string_view separator = i == 0 ? "" : ",";
        names.append(separator).append(quotedColumn(columns[i]));
        cells.append(separator).append("c").append(std::to_string(i));
    }
    return insertWords(table, onConflict) + " (" + names + ") SELECT " + cells + " FROM " + rowsTable;
}

/// A statement that fails midway may keep the rows before the failure, so this is looked at before anything is written.
void requireBindable(const RowSource& rows) {
    if (!rows.mayHoldObjects()) return;
    auto columns = rows.columns().size();
    for (std::size_t row = 0; row < rows.rowCount(); ++row)
        for (std::size_t column = 0; column < columns; ++column)
            if (auto cell = rows.cell(row, column); !isBindable(cell)) throwNotBindable(cell);
}

/// The length of the run of neighbouring rows that have the same columns, from a row on.
std::size_t lengthOfRun(const RowSource& rows, std::size_t first) {
    auto columns = rows.columns().size();
    auto isAlike = [&](std::size_t row) {
        for (std::size_t column = 0; column < columns; ++column)
            if (rows.hasCell(row, column) != rows.hasCell(first, column)) return false;
        return true;
    };
    auto end = first + 1;
    while (end < rows.rowCount() && isAlike(end)) ++end;
    return end - first;
}

/// A run of such rows with the columns that they have.
class Run final : public RowSource {
public:
    Run(const RowSource& rows, std::size_t first) : rows_(rows), first_(first), count_(lengthOfRun(rows, first)) {
        for (std::size_t column = 0; column < rows.columns().size(); ++column) {
            if (!rows.hasCell(first, column)) continue;
            kept_.push_back(column);
            names_.push_back(rows.columns()[column]);
        }
    }
    std::span<const std::string> columns() const override { return names_; }
    std::size_t rowCount() const override { return count_; }
    tarvo::ValueView cell(std::size_t row, std::size_t column) const override {
        return rows_.cell(first_ + row, kept_[column]);
    }
    bool mayHoldObjects() const override { return false; }  // it has been looked at

private:
    const RowSource& rows_;
    const std::size_t first_, count_;
    std::vector<std::size_t> kept_;
    std::vector<std::string> names_;
};

/// The updates of a batch. Rows that have the same columns share one prepared statement.
class BatchUpdate {
public:
    BatchUpdate(Connection& connection, std::string_view table, const RowSource& rows,
                std::span<const std::size_t> keys)
        : connection_(connection), table_(table), rows_(rows), isKey_(rows.columns().size()) {
        for (auto key : keys) isKey_[key] = true;
    }

    /// Returns the places of the rows that break a rule of the table.
    std::vector<std::size_t> run() {
        std::vector<std::size_t> refused;
        for (std::size_t row = 0; row < rows_.rowCount(); ++row) {
            if (!hasPlannedColumns(row)) plan(row);
            if (!canUpdate_) continue;
            try {
                update(row);
            } catch (const DatabaseError& error) {
                if (error.kind() != FailureKind::constraint) throw;
                refused.push_back(row);
                execution_.reset();
            }
        }
        return refused;
    }

private:
    bool hasPlannedColumns(std::size_t row) const {
        for (std::size_t column = 0; column < hasColumn_.size(); ++column)
            if (rows_.hasCell(row, column) != hasColumn_[column]) return false;
        return !hasColumn_.empty();
    }

    void plan(std::size_t row) {
        std::vector<std::size_t> set, where;
        hasColumn_.assign(isKey_.size(), false);
        for (std::size_t column = 0; column < isKey_.size(); ++column) {
            if (!rows_.hasCell(row, column)) continue;
            hasColumn_[column] = true;
            (isKey_[column] ? where : set).push_back(column);
        }
        canUpdate_ = !set.empty() && !where.empty();
        sql_ = "UPDATE " + quotedName(table_) + " SET " + terms(set, ",") + " WHERE " + terms(where, " AND ");
        execution_.reset();
        bound_ = std::move(set);
        bound_.insert(bound_.end(), where.begin(), where.end());
    }

    std::string terms(const std::vector<std::size_t>& places, std::string_view separator) const {
        std::string text;
        for (auto place : places)
            text.append(text.empty() ? "" : separator).append(quotedColumn(rows_.columns()[place])).append("=?");
        return text;
    }

    void update(std::size_t row) {
        values_.clear();
        for (auto column : bound_) {
            values_.push_back(rows_.cell(row, column));
            if (values_.back().nested()) throwNotBindable(values_.back());
        }
        std::string_view rest;
        if (execution_)
            execution_->reset();
        else
            execution_.emplace(connection_, sql_, rest);
        execution_->bind(values_);
        execution_->runToEnd();
    }

    Connection& connection_;
    const std::string_view table_;
    const RowSource& rows_;
    std::vector<bool> isKey_;
    // The plan, which lasts as long as rows have the same columns.
    std::vector<bool> hasColumn_;
    std::vector<std::size_t> bound_;
    bool canUpdate_ = false;
    std::string sql_;
    std::vector<tarvo::ValueView> values_;
    std::optional<Execution> execution_;
};

}  // namespace

std::vector<std::size_t> Database::update(std::string_view table, const RowSource& rows,
                                          std::span<const std::size_t> keys) {
    return BatchUpdate(connection_, table, rows, keys).run();
}

void Database::execute(std::string_view sql, std::span<const Value> parameters) {
    connection_.execute(sql, parameters);
}

std::vector<std::string> Database::executeUntrusted(std::string_view sql, std::chrono::milliseconds timeLimit) {
    return connection_.executeUntrusted(sql, timeLimit);
}

void Database::execute(const QueryInterfaceProtocol& query) { execute(query.sql(), query.parameters()); }

Rows Database::query(std::string_view sql, std::span<const Value> parameters) {
    return connection_.query(sql, parameters);
}

void Database::insert(std::string_view intoTable, const ValueMap& values, OnConflict onConflict) {
    insert(intoTable, std::span(&values, 1), onConflict);
}

void Database::insert(std::string_view intoTable, std::span<const ValueMap> rows, OnConflict onConflict) {
    insert(intoTable, tarvo::MapRowSource(rows), onConflict);
}

void Database::insert(std::string_view intoTable, const RowSource& rows, OnConflict onConflict) {
    if (rows.rowCount() == 0) return;
    if (rows.columns().empty()) {
        auto sql = insertWords(intoTable, onConflict) + " DEFAULT VALUES";
        for (std::size_t i = 0; i < rows.rowCount(); ++i) execute(sql);
        return;
    }
    requireBindable(rows);
    // A batch that goes in one statement writes NULL where a cell is absent.
    if (rows.isUniform() || !connection_.hasDefaults(intoTable))
        return connection_.insertBatch(batchStatement(intoTable, rows.columns(), onConflict), rows);
    inSavepoint([&] {
        for (std::size_t first = 0; first < rows.rowCount();) {
            Run run(rows, first);
            insert(intoTable, run, onConflict);
            first += run.rowCount();
        }
    });
}

void Database::create(std::string_view table, bool temporary, bool ifNotExists,
                      tarvo::platform::FunctionRef<void(TableDefinition&)> block) {
    TableDefinition definition;
    block(definition);
    std::string words = temporary ? "CREATE TEMPORARY TABLE " : "CREATE TABLE ";
    if (ifNotExists) words += "IF NOT EXISTS ";
    execute(words + quotedName(table) + " (" + tarvo::text::join(definition.pieces_, ", ") + ")");
}

void Database::drop(std::string_view table, bool ifExists) {
    execute((ifExists ? "DROP TABLE IF EXISTS " : "DROP TABLE ") + quotedName(table));
}

std::vector<std::string> Database::columnNames(std::string_view table) { return connection_.columnNames(table); }

void Database::inSavepoint(tarvo::platform::FunctionRef<void()> block) { connection_.inSavepoint(block); }

std::int64_t Database::changes() const { return sqlite3_changes(connection_.handle()); }

}  // namespace kelva
