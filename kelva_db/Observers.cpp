#include "kelva_db/Observers.h"

#include <algorithm>

namespace kelva {

void TransactionChanges::add(DatabaseEvent type, std::string_view tableName, std::int64_t rowID) {
    auto& tables = rows_[static_cast<int>(type)];
    auto table = tables.find(tableName);
    if (table == tables.end()) table = tables.emplace(std::string(tableName), std::set<std::int64_t>()).first;
    table->second.insert(rowID);
}

void TransactionChanges::reset() {
    for (auto& tables : rows_) tables.clear();
}

bool TransactionChanges::empty() const {
    return std::all_of(std::begin(rows_), std::end(rows_), [](auto& tables) { return tables.empty(); });
}

}  // namespace kelva
