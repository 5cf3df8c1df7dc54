#include "tarvobase/storage/DatabasePersistanceClass.h"

#include <algorithm>

#include "platform/Text.h"
#include "tarvobase/utils/LogOnce.h"

namespace tarvo {

namespace {

/// A batch without some of its columns.
class ColumnSelection final : public RowSource {
public:
    ColumnSelection(const RowSource& batch, std::vector<std::size_t> kept) : batch_(batch), kept_(std::move(kept)) {
        for (auto place : kept_) names_.push_back(batch_.columns()[place]);
    }
    std::span<const std::string> columns() const override { return names_; }
    std::size_t rowCount() const override { return batch_.rowCount(); }
    ValueView cell(std::size_t row, std::size_t column) const override { return batch_.cell(row, kept_[column]); }
    bool mayHoldObjects() const override { return batch_.mayHoldObjects(); }

private:
    const RowSource& batch_;
    const std::vector<std::size_t> kept_;
    std::vector<std::string> names_;
};

}  // namespace

void TableAccess::store(std::vector<ValueMap> rows) const {
    if (!adapter_ || rows.empty()) return;
    leaveOutMissingColumns(rows);
    if (rows.size() == 1)
        adapter_->insertInto(tableName_, rows.front());
    else
        adapter_->insertInto(tableName_, rows);
}

std::optional<std::vector<std::size_t>> TableAccess::storeAccepted(const RowSource& rows) const {
    if (!adapter_) return std::nullopt;
    if (rows.rowCount() == 0) return std::vector<std::size_t>();
    auto inTable = columns();
    std::vector<std::size_t> kept;
    for (std::size_t place = 0; place < rows.columns().size(); ++place)
        if (has(rows.columns()[place], inTable)) kept.push_back(place);
    if (kept.size() == rows.columns().size()) return adapter_->insertAccepted(tableName_, rows);
    return adapter_->insertAccepted(tableName_, ColumnSelection(rows, std::move(kept)));
}

void TableAccess::replaceAll(std::vector<ValueMap> rows) const {
    if (!adapter_) return;
    leaveOutMissingColumns(rows);
    std::vector<DatabaseAdapter::Statement> statements{{DeleteQuery(tableName_).sql(), std::nullopt}};
    for (auto& row : rows) {
        InsertQuery query(tableName_, std::move(row));
        statements.push_back({query.sql(), query.parameters()});
    }
    adapter_->execute(statements);
}

void TableAccess::update(ValueMap values, const Criteria& criteria) const {
    if (!adapter_) return;
    leaveOutMissingColumns({&values, 1});
    if (values.empty()) return;
    adapter_->update(tableName_, values, criteria);
}

void TableAccess::leaveOutMissingColumns(std::span<ValueMap> rows) const {
    auto inTable = columns();
    std::vector<std::string> missing;
    MapRowSource batch(rows);
    for (auto& name : batch.columns())
        if (!has(name, inTable)) missing.push_back(name);
    for (auto& name : missing)
        for (auto& row : rows) row.remove(name);
}

bool TableAccess::has(const std::string& column, const std::vector<std::string>& columns) const {
    auto isSame = [&](auto& name) { return text::equalsIgnoringAsciiCase(name, column); };
    if (columns.empty() || std::any_of(columns.begin(), columns.end(), isSame)) return true;
    logOnce("table " + tableName_ + " has no column " + column + ": it is left out");
    return false;
}

void TableAccess::noteDamaged(const std::string& column) const {
    logOnce("table " + tableName_ + " has rows that cannot be read for their column " + column + ": they are left out");
}

}  // namespace tarvo
