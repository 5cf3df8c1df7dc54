#include "tarvobase/storage/DatabasePersistanceClass.h"

#include <algorithm>

#include "platform/Text.h"
#include "tarvobase/utils/LogOnce.h"

namespace tarvo {

namespace {

/// A batch without some of its columns and without the rows that have values only in those.
class BatchSelection final : public RowSource {
public:
    BatchSelection(const RowSource& batch, std::vector<std::size_t> keptColumns)
        : batch_(batch), columns_(std::move(keptColumns)) {
        for (auto place : columns_) names_.push_back(batch_.columns()[place]);
        for (std::size_t row = 0; row < batch_.rowCount(); ++row) (hasValue(row) ? rows_ : leftOut_).push_back(row);
    }
    std::span<const std::string> columns() const override { return names_; }
    std::size_t rowCount() const override { return rows_.size(); }
    ValueView cell(std::size_t row, std::size_t column) const override {
        return batch_.cell(rows_[row], columns_[column]);
    }
    bool isUniform() const override { return batch_.isUniform(); }
    bool hasCell(std::size_t row, std::size_t column) const override {
        return batch_.hasCell(rows_[row], columns_[column]);
    }
    bool mayHoldObjects() const override { return batch_.mayHoldObjects(); }

    /// Returns the indexes in the batch of the rows that were left out and of those that were refused, in order.
    std::vector<std::size_t> placesOf(const std::vector<std::size_t>& refused) const {
        auto places = leftOut_;
        for (auto row : refused) places.push_back(rows_[row]);
        std::sort(places.begin(), places.end());
        return places;
    }

private:
    bool hasValue(std::size_t row) const {
        return std::any_of(columns_.begin(), columns_.end(),
                           [&](auto column) { return !batch_.cell(row, column).isNull(); });
    }

    const RowSource& batch_;
    const std::vector<std::size_t> columns_;
    std::vector<std::size_t> rows_, leftOut_;
    std::vector<std::string> names_;
};

/// A batch without some of its columns.
class ColumnSelection final : public RowSource {
public:
    ColumnSelection(const RowSource& batch, std::vector<std::size_t> keptColumns)
        : batch_(batch), columns_(std::move(keptColumns)) {
        for (auto place : columns_) names_.push_back(batch_.columns()[place]);
    }
    std::span<const std::string> columns() const override { return names_; }
    std::size_t rowCount() const override { return batch_.rowCount(); }
    ValueView cell(std::size_t row, std::size_t column) const override { return batch_.cell(row, columns_[column]); }
    bool isUniform() const override { return batch_.isUniform(); }
    bool hasCell(std::size_t row, std::size_t column) const override { return batch_.hasCell(row, columns_[column]); }
    bool mayHoldObjects() const override { return batch_.mayHoldObjects(); }

private:
    const RowSource& batch_;
    const std::vector<std::size_t> columns_;
    std::vector<std::string> names_;
};

}  // namespace

bool TableAccess::store(std::vector<ValueMap> rows) const {
    if (!adapter_) return false;
    if (rows.empty()) return true;
    leaveOutMissingColumns(rows);
    bool hasKeptAll = keepStorable(rows);
    if (rows.empty()) return false;
    bool isStored =
        rows.size() == 1 ? adapter_->insertInto(tableName_, rows.front()) : adapter_->insertInto(tableName_, rows);
    return isStored && hasKeptAll;
}

std::optional<std::vector<std::size_t>> TableAccess::storeAccepted(const RowSource& rows) const {
    if (!adapter_) return std::nullopt;
    if (rows.rowCount() == 0) return std::vector<std::size_t>();
    auto kept = placesInTable(rows);
    if (kept.size() == rows.columns().size()) return adapter_->insertAccepted(tableName_, rows);
    BatchSelection selection(rows, std::move(kept));
    if (selection.rowCount() == 0) return selection.placesOf({});
    auto refused = adapter_->insertAccepted(tableName_, selection);
    return refused ? std::optional(selection.placesOf(*refused)) : std::nullopt;
}

std::optional<std::vector<std::size_t>> TableAccess::updateAccepted(const RowSource& rows,
                                                                    const std::vector<std::string>& keys) const {
    if (!adapter_) return std::nullopt;
    auto update = [&](const RowSource& cells) {
        std::vector<std::size_t> keyPlaces;
        for (std::size_t place = 0; place < cells.columns().size(); ++place)
            if (std::find(keys.begin(), keys.end(), cells.columns()[place]) != keys.end()) keyPlaces.push_back(place);
        return adapter_->updateAccepted(tableName_, cells, keyPlaces);
    };
    auto kept = placesInTable(rows);
    return kept.size() == rows.columns().size() ? update(rows) : update(ColumnSelection(rows, std::move(kept)));
}

std::vector<std::size_t> TableAccess::placesInTable(const RowSource& rows) const {
    auto inTable = columns();
    std::vector<std::size_t> places;
    for (std::size_t place = 0; place < rows.columns().size(); ++place)
        if (has(rows.columns()[place], inTable)) places.push_back(place);
    return places;
}

bool TableAccess::replaceAll(std::vector<ValueMap> rows) const {
    if (!adapter_) return false;
    leaveOutMissingColumns(rows);
    if (!keepStorable(rows)) return false;
    std::vector<DatabaseAdapter::Statement> statements{{DeleteQuery(tableName_).sql(), std::nullopt}};
    for (auto& row : rows) {
        InsertQuery query(tableName_, std::move(row));
        statements.push_back({query.sql(), query.parameters()});
    }
    return adapter_->execute(statements);
}

bool TableAccess::update(ValueMap values, const Criteria& criteria, const std::vector<std::string>& keys) const {
    if (!adapter_) return false;
    if (values.empty()) return true;
    leaveOutMissingColumns({&values, 1});
    for (auto& key : keys)
        if (values.size() > 1) values.remove(key);
    return !values.empty() && adapter_->update(tableName_, values, criteria);
}

bool TableAccess::keepStorable(std::vector<ValueMap>& rows) {
    return std::erase_if(rows, [](auto& row) { return row.empty(); }) == 0;
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

void TableAccess::logUnreadable(const std::string& column) const {
    logOnce("table " + tableName_ + " has rows that cannot be read for their column " + column + ": they are left out");
}

}  // namespace tarvo
