#include "tarvobase/storage/InMemoryStorage.h"

#include <algorithm>
#include <limits>
#include <map>

#include "platform/ProcessState.h"
#include "platform/ThreadSafety.h"

namespace tarvo {

namespace {

using Objects = InMemoryDatabaseAdapter::Objects;
using ColumnValues = InMemoryDatabaseAdapter::ColumnValues;

constexpr auto unlimited = std::numeric_limits<std::int64_t>::max();

/// The tables by owner and name. One lock serves reads and writes: a table has some hundred objects, and holding the
/// lock for a walk over them costs less than a finer lock would.
class StoredValues {
public:
    template <class F>
    auto withTable(const std::string& owner, const std::string& tableName, F&& use) {
        platform::MutexLock lock(mutex_);
        return use(owners_[owner][tableName]);
    }
    static StoredValues& shared() { return platform::ProcessState::current().get<StoredValues>(); }

private:
    platform::Mutex mutex_;
    std::map<std::string, std::map<std::string, std::optional<Objects>>> owners_ TARVO_GUARDED_BY(mutex_);
};

/// Runs `use` on a table, or on a missing one while another owner is current.
template <class F>
auto withTable(const InMemoryStorage& storage, const std::string& tableName, F&& use) {
    std::optional<Objects> absent;
    if (!storage.isOwnerCurrent()) return use(absent);
    return StoredValues::shared().withTable(storage.owner(), tableName, std::forward<F>(use));
}

bool matches(const InMemeoryDatabaseStorable& object, const ColumnValues& filterValues) {
    return std::all_of(filterValues.begin(), filterValues.end(),
                       [&](auto& filter) { return object[filter.first].isEqual(filter.second); });
}

std::optional<Objects> getFilteredArray(const std::optional<Objects>& table, const ColumnValues& filterValues,
                                        std::int64_t limit) {
    if (!table) return std::nullopt;
    Objects found;
    for (auto& object : *table) {
        if (limit <= 0) break;
        if (!matches(*object, filterValues)) continue;
        found.push_back(object);
        --limit;
    }
    return found;
}

}  // namespace

// An account has different modules in each of its organisations.
std::string InMemoryStorage::owner() const {
    return scope_ && !scope_->organisation.empty() ? account() + "\n" + scope_->organisation : account();
}

void InMemoryStorage::insertInto(const std::string& tableName, Object object) {
    insertInto(tableName, Objects{std::move(object)});
}

void InMemoryStorage::insertInto(const std::string& tableName, const Objects& objects) {
    withTable(*this, tableName, [&](std::optional<Objects>& table) {
        if (!table) table.emplace();
        table->insert(table->end(), objects.begin(), objects.end());
    });
}

void InMemoryStorage::update(const std::string& tableName, Object object, const ColumnValues& columnValues) {
    withTable(*this, tableName, [&](std::optional<Objects>& table) {
        if (!table) return;
        for (auto& present : *table)
            if (matches(*present, columnValues)) present = object;
    });
}

std::optional<Objects> InMemoryStorage::fetchObjects(const std::string& tableName, const ColumnValues& columnValues,
                                                     std::int64_t limit) {
    return withTable(*this, tableName,
                     [&](std::optional<Objects>& table) { return getFilteredArray(table, columnValues, limit); });
}

std::optional<Objects> InMemoryStorage::fetchAllObjects(const std::string& fromTable, std::int64_t) {
    return fetchAllObjects(fromTable);
}

std::optional<Objects> InMemoryStorage::fetchObjects(const std::string& tableName, const ColumnValues& columnValues) {
    return fetchObjects(tableName, columnValues, unlimited);
}

std::optional<Objects> InMemoryStorage::fetchAllObjects(const std::string& tableName) {
    return withTable(*this, tableName, [](std::optional<Objects>& table) { return table; });
}

void InMemoryStorage::deleteObjects(const std::string& tableName, const ColumnValues& columnValues) {
    withTable(*this, tableName, [&](std::optional<Objects>& table) {
        if (table) std::erase_if(*table, [&](auto& object) { return matches(*object, columnValues); });
    });
}

void InMemoryStorage::deleteAllObjects(const std::string& tableName) {
    withTable(*this, tableName, [](std::optional<Objects>& table) { table = Objects(); });
}

void InMemoryStorage::change(const std::string& tableName, const std::string& owner,
                             platform::FunctionRef<void(std::optional<Objects>& table)> change) {
    StoredValues::shared().withTable(owner, tableName, [&](std::optional<Objects>& table) { change(table); });
}

}  // namespace tarvo
