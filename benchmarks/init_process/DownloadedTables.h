#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/kelva/HandWritten.h"
#include "kelva_db/Database.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/value_objects/tag/Tag.h"

namespace tarvo::benchmarks {

class FetchedRows final : public RowSource {
public:
    explicit FetchedRows(const Rows& rows) : rows_(rows) {}
    std::span<const std::string> columns() const override { return rows_.columns().names(); }
    std::size_t rowCount() const override { return rows_.size(); }
    ValueView cell(std::size_t row, std::size_t column) const override { return rows_.cell(row, column); }
    bool mayHoldObjects() const override { return false; }

private:
    const Rows& rows_;
};

/// The result of a download: the schema, the rows that storing records needs, and the rows that it made.
class DownloadedTables {
public:
    using HandWritten = kelva::benchmarks::HandWritten;

    DownloadedTables(DatabaseAdapter& database, const std::vector<std::string>& modules) {
        std::set<std::string> ofRecords{std::string(TagRecordDBMapper().tableName)};
        for (auto& module : modules) ofRecords.insert(RecordUtil::getTableName(module));
        auto schema = database.fetchObjects(
            "SELECT name, sql, type FROM sqlite_master WHERE sql IS NOT NULL AND name NOT LIKE 'sqlite\\_%' ESCAPE "
            "'\\' "
            "ORDER BY type <> 'table', rowid",
            std::nullopt);
        for (auto entry : *schema) {
            statements_.push_back(entry.valueOf("sql").textOr(""));
            auto name = entry.valueOf("name").textOr("");
            if (entry.valueOf("type").textOr("") != "table") continue;
            auto rows = *database.fetchAllObjects(kelva::quotedName(name));
            if (rows.empty()) continue;
            if (!ofRecords.contains(name))
                metadata_.emplace_back(name, rows);
            else
                rowCount_ += rows.size(), records_.push_back(cellsOf(name, rows));
        }
    }

    /// The number of rows in all record tables, dependent rows included.
    std::size_t rowCount() const { return rowCount_; }

    /// Brings a database into the state in which the step of the records finds it.
    void prepare(DatabaseAdapter& database) const {
        for (auto& statement : statements_) database.createTable(statement);
        for (auto& [name, rows] : metadata_) database.insertInto(kelva::quotedName(name), FetchedRows(rows));
    }
    void prepare(HandWritten& hand) const {
        for (auto& statement : statements_) hand.run(statement.c_str());
    }
    void insert(HandWritten& hand) const {
        for (auto& table : records_) hand.insert(table.name, table.columns, table.cells);
    }

private:
    struct Cells {
        std::string name;
        std::vector<std::string> columns;
        std::vector<HandWritten::View> cells;
        Rows rows;  ///< owns the texts
    };
    static Cells cellsOf(const std::string& name, const Rows& rows) {
        Cells table{kelva::quotedName(name), {}, {}, rows};
        std::vector<std::size_t> places;
        for (std::size_t place = 0; place < rows.columns().size(); ++place) {
            auto& column = rows.columns().names()[place];
            if (column == "_id") continue;  // the table numbers its rows
            places.push_back(place);
            table.columns.push_back(kelva::quotedName(column));
        }
        for (auto row : rows)
            for (auto place : places) table.cells.push_back(viewOf(row.cell(place)));
        return table;
    }
    static HandWritten::View viewOf(const ValueView& value) {
        auto text = value.asText();
        if (!text) text = value.asBytes();
        if (text) return {text->data() ? text->data() : "", text->size(), 0};
        return {nullptr, 0, value.asInteger().value_or(0), value.isNull()};
    }

    std::vector<std::string> statements_;
    std::vector<std::pair<std::string, Rows>> metadata_;
    std::vector<Cells> records_;
    std::size_t rowCount_ = 0;
};

}  // namespace tarvo::benchmarks
