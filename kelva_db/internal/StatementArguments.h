#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "kelva_db/internal/BoundValues.h"
#include "kelva_db/internal/ListTables.h"
#include "kelva_db/internal/Sql.h"

namespace kelva {

/// The parameters of a text in the two ways that they reach SQLite: bound, and through the table of values.
class StatementArguments {
public:
    StatementArguments(std::string_view sql, std::span<const Value> parameters, std::size_t limit);
    StatementArguments(const StatementArguments&) = delete;

    std::string_view sql() const { return sql_; }
    std::span<const ValueView> bound() const { return bound_; }
    std::vector<ListTables::List> lists() const { return lists_; }

private:
    void takeLists();

    BoundValues values_;
    LiftedLists lifted_;
    std::string_view sql_;
    std::vector<ValueView> bound_;
    std::vector<ListTables::List> lists_;
};

/// Lends lists or a batch to the virtual tables for the run of a statement.
class Lending {
public:
    Lending(ListTables& tables, std::vector<ListTables::List> lists) : tables_(tables) {
        tables.setLists(std::move(lists));
    }
    Lending(ListTables& tables, const tarvo::RowSource& batch) : tables_(tables) { tables.setBatch(&batch); }
    ~Lending() {
        tables_.setLists({});
        tables_.setBatch(nullptr);
    }
    Lending(const Lending&) = delete;

private:
    ListTables& tables_;
};

}  // namespace kelva
