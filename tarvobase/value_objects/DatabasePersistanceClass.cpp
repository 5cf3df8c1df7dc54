#include "tarvobase/value_objects/DatabasePersistanceClass.h"

#include <mutex>
#include <set>

#include "platform/Log.h"
#include "platform/ProcessState.h"
#include "platform/Text.h"

namespace tarvo {

namespace {

/// Columns that were left out of a write, so that each is logged once.
struct LeftOutColumns {
    void note(const std::string& table, const std::string& column) {
        {
            std::lock_guard lock(mutex);
            if (!known.emplace(table, column).second) return;
        }
        platform::log("table " + table + " has no column " + column + ": it is left out");
    }
    std::mutex mutex;
    std::set<std::pair<std::string, std::string>> known;
};

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
        platform::ProcessState::current().get<LeftOutColumns>().note(tableName_, name);
        for (auto& row : rows) row.remove(name);
    }
}

}  // namespace tarvo
