#include "tarvobase/list_view/ListOrderIndexes.h"

#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "kelva_db/Database.h"
#include "platform/ProcessState.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/usecase/Usecase.h"

namespace tarvo {

namespace {

/// Remembers the order in which each table was read last, by the name of its index.
class LatestOrders {
public:
    /// Records an order. Returns whether the table was read in another order before.
    bool note(const std::string& database, const std::string& table, const std::string& index) {
        platform::MutexLock lock(mutex_);
        return std::exchange(latest_[{database, table}], index) != index;
    }

private:
    platform::Mutex mutex_;
    std::map<std::pair<std::string, std::string>, std::string> latest_ TARVO_GUARDED_BY(mutex_);
};

std::string prefixOf(const std::string& table) { return "tarvo_order_" + table + "_"; }

/// The name is derived from the text of the order. Another build may hash differently; the index is then made anew.
std::string indexName(const std::string& table, const std::string& terms) {
    return prefixOf(table) + std::to_string(std::hash<std::string>()(terms));
}

/// Returns the indexes that this library has made on a table.
std::vector<std::string> existing(DatabaseAdapter& adapter, const std::string& table) {
    auto rows =
        adapter.fetchObjects("SELECT name FROM sqlite_master WHERE type = 'index' AND tbl_name = ?", ValueList{table});
    std::vector<std::string> names;
    if (!rows) return names;
    for (auto row : *rows) {
        auto name = row.cell(0).asText();
        if (name && name->starts_with(prefixOf(table))) names.emplace_back(*name);
    }
    return names;
}

void replaceIndex(DatabaseAdapter& adapter, const std::string& table, const std::string& index,
                  const std::string& terms) {
    std::vector<DatabaseAdapter::Statement> statements;
    for (auto& name : existing(adapter, table)) {
        if (name == index) return;
        statements.push_back({"DROP INDEX IF EXISTS " + kelva::quotedName(name), std::nullopt});
    }
    statements.push_back({"CREATE INDEX IF NOT EXISTS " + kelva::quotedName(index) + " ON " + kelva::quotedName(table) +
                              " (" + terms + ")",
                          std::nullopt});
    adapter.execute(statements);
}

}  // namespace

void ListOrderIndexes::keep(const std::shared_ptr<DatabaseAdapter>& adapter, const std::string& table,
                            const std::string& terms) {
    auto index = indexName(table, terms);
    if (!platform::ProcessState::current().get<LatestOrders>().note(adapter->databaseName(), table, index)) return;
    UsecaseQueue::queue()->async([weak = std::weak_ptr(adapter), table, index, terms] {
        if (auto adapter = weak.lock()) replaceIndex(*adapter, table, index, terms);
    });
}

}  // namespace tarvo
