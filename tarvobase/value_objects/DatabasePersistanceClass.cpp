#include "tarvobase/value_objects/DatabasePersistanceClass.h"

#include "platform/Text.h"
#include "tarvobase/utils/LogOnce.h"

namespace tarvo {

namespace {

bool contains(const std::vector<std::string>& columns, const std::string& name) {
    for (auto& column : columns)
        if (text::equalsIgnoringAsciiCase(column, name)) return true;
    return false;
}

}  // namespace

void TableAccess::store(std::vector<ValueMap> rows) const {
    if (!adapter_ || rows.empty()) return;
    leaveOutMissingColumns(rows);
    if (rows.size() == 1)
        adapter_->insertInto(tableName_, rows.front());
    else
        adapter_->insertInto(tableName_, rows);
}

void TableAccess::update(ValueMap values, const Criteria& criteria) const {
    if (!adapter_) return;
    leaveOutMissingColumns({&values, 1});
    if (values.empty()) return;
    adapter_->update(tableName_, values, criteria);
}

void TableAccess::leaveOutMissingColumns(std::span<ValueMap> rows) const {
    auto columns = adapter_->columnNames(tableName_);
    // Without a table the adapter says so by itself.
    if (columns.empty()) return;
    std::vector<std::string> missing;
    MapRowSource batch(rows);
    for (auto& name : batch.columns())
        if (!contains(columns, name)) missing.push_back(name);
    for (auto& name : missing) {
        logOnce("table " + tableName_ + " has no column " + name + ": it is left out");
        for (auto& row : rows) row.remove(name);
    }
}

void TableAccess::noteDamaged(const std::string& column) const {
    logOnce("table " + tableName_ + " has rows that cannot be read for their column " + column + ": they are left out");
}

}  // namespace tarvo
