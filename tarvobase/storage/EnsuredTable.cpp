#include "tarvobase/storage/EnsuredTable.h"

#include <algorithm>

#include "kelva_db/Database.h"
#include "platform/Text.h"

namespace tarvo {

namespace {

using TableStatement = DatabaseAdapter::Statement;

std::string declared(const EnsuredTable::Column& column) { return column.name + " " + column.declaration; }

}  // namespace

EnsuredTable::EnsuredTable(std::shared_ptr<DatabaseAdapter> adapter, const std::string& name, Declaration declaration)
    : adapter_(std::move(adapter)),
      plainName_(name),
      name_(kelva::quotedName(name)),
      declaration_(std::move(declaration)) {}

bool EnsuredTable::ensure() const {
    if (!adapter_) return false;
    auto present = adapter_->columnNames(plainName_);
    std::vector<TableStatement> statements;
    if (present.empty()) {
        std::vector<std::string> clauses;
        for (auto& column : declaration_.columns) clauses.push_back(declared(column));
        if (!declaration_.keys.empty()) clauses.push_back(declaration_.keys);
        statements.push_back(
            {"CREATE TABLE IF NOT EXISTS " + name_ + " (" + text::join(clauses, ", ") + ")", std::nullopt});
        for (auto& statement : indexStatements()) statements.push_back(statement);
    } else {
        for (auto& column : declaration_.columns)
            if (std::none_of(present.begin(), present.end(),
                             [&](auto& name) { return text::equalsIgnoringAsciiCase(name, column.name); }))
                statements.push_back({"ALTER TABLE " + name_ + " ADD COLUMN " + declared(column), std::nullopt});
    }
    return statements.empty() || adapter_->execute(statements);
}

bool EnsuredTable::ensureIndexes() const {
    auto statements = indexStatements();
    return ensure() && (statements.empty() || adapter_->execute(statements));
}

std::vector<TableStatement> EnsuredTable::indexStatements() const {
    std::vector<TableStatement> statements;
    for (auto& column : declaration_.indexed)
        statements.push_back({"CREATE INDEX IF NOT EXISTS " + kelva::quotedName("tarvo_" + plainName_ + "_" + column) +
                                  " ON " + name_ + " (" + column + ")",
                              std::nullopt});
    return statements;
}

bool EnsuredTable::execute(const std::vector<TableStatement>& statements) const {
    return ensure() && adapter_->execute(statements);
}

bool EnsuredTable::replace(const std::string& key, std::vector<ValueMap> rows) const {
    if (!adapter_) return false;
    if (rows.empty()) return true;
    ValueList keys;
    for (auto& row : rows) keys.push_back(row.valueOf(key));
    DeleteQuery former(name_, Criteria::in(key, std::move(keys)));
    std::vector<TableStatement> statements{{former.sql(), former.parameters()}};
    for (auto& row : rows) {
        InsertQuery query(name_, std::move(row));
        statements.push_back({query.sql(), query.parameters()});
    }
    return execute(statements);
}

bool EnsuredTable::ensureIndex(const std::string& suffix, const std::string& expression) const {
    if (!adapter_) return false;
    auto index = plainName_ + "_" + suffix;
    auto found =
        adapter_->fetchObjects("SELECT 1 FROM sqlite_master WHERE type = 'index' AND name = ?", ValueList{index});
    if (found && !found->empty()) return true;
    return execute(RawQuery(
        "CREATE INDEX IF NOT EXISTS " + kelva::quotedName(index) + " ON " + name_ + " (" + expression + ")", {}));
}

std::optional<Rows> EnsuredTable::fetch(const FetchQuery& query) const {
    if (!adapter_) return std::nullopt;
    // An empty list of columns also stands for a database that is closed, which the second read finds out.
    if (adapter_->columnNames(plainName_).empty()) return adapter_->fetchObjects("SELECT 1 WHERE 0", std::nullopt);
    return adapter_->fetchObjects(query);
}

}  // namespace tarvo
