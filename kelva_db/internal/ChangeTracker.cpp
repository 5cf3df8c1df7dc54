#include "kelva_db/internal/ChangeTracker.h"

#include <algorithm>
#include <set>
#include <utility>

#include "platform/ProgrammingError.h"
#include "platform/Text.h"

namespace kelva {

namespace {

template <class Observer>
void addOnce(std::vector<std::shared_ptr<Observer>>& list, std::shared_ptr<Observer> observer) {
    if (observer && std::find(list.begin(), list.end(), observer) == list.end()) list.push_back(std::move(observer));
}

/// Takes an observer out and hands it back, so that it dies outside the lock.
template <class Observer>
std::shared_ptr<Observer> takeOut(std::vector<std::shared_ptr<Observer>>& list, const Observer* observer) {
    auto found = std::find_if(list.begin(), list.end(), [&](auto& one) { return one.get() == observer; });
    if (found == list.end()) return nullptr;
    auto taken = std::move(*found);
    list.erase(found);
    return taken;
}

/// An observer has no say in the outcome of a write, which may have been committed already.
template <class Call>
void guarded(const char* what, Call&& call) {
    try {
        call();
    } catch (const std::exception&) {
        tarvo::platform::reportProgrammingError(std::string("an observer of the database threw in ") + what);
    }
}

}  // namespace

void ChangeTracker::add(std::shared_ptr<TransactionObserver> observer) {
    tarvo::platform::MutexLock lock(mutex_);
    addOnce(observers_, std::move(observer));
    ++generation_;
}

void ChangeTracker::add(std::shared_ptr<SimpleObserver> observer) {
    tarvo::platform::MutexLock lock(mutex_);
    addOnce(simpleObservers_, std::move(observer));
    ++generation_;
}

void ChangeTracker::remove(const TransactionObserver* observer) {
    std::shared_ptr<TransactionObserver> taken;
    tarvo::platform::MutexLock lock(mutex_);
    taken = takeOut(observers_, observer);
    ++generation_;
}

void ChangeTracker::remove(const SimpleObserver* observer) {
    std::shared_ptr<SimpleObserver> taken;
    tarvo::platform::MutexLock lock(mutex_);
    taken = takeOut(simpleObservers_, observer);
    ++generation_;
}

void ChangeTracker::removeAll() {
    std::vector<std::shared_ptr<TransactionObserver>> observers;
    std::vector<std::shared_ptr<SimpleObserver>> simpleObservers;
    tarvo::platform::MutexLock lock(mutex_);
    observers.swap(observers_);
    simpleObservers.swap(simpleObservers_);
    ++generation_;
}

void ChangeTracker::begin() {
    transaction_ = {};
    lastTable_ = 0;
    tarvo::platform::MutexLock lock(mutex_);
    transaction_.observers = observers_;
    transaction_.simpleObservers = simpleObservers_;
    transaction_.generation = generation_;
}

std::uint32_t ChangeTracker::tableNumber(const char* databaseName, const char* tableName) {
    auto& tables = transaction_.tables;
    auto isIt = [&](const Table& table) { return table.name == tableName && table.database == databaseName; };
    if (lastTable_ < tables.size() && isIt(tables[lastTable_])) return lastTable_;
    lastTable_ = static_cast<std::uint32_t>(std::find_if(tables.begin(), tables.end(), isIt) - tables.begin());
    if (lastTable_ == tables.size()) {
        auto& added = tables.emplace_back();
        added.database = databaseName;
        added.name = tableName;
        added.lowerName = tarvo::text::asciiLowercase(tableName);
    }
    return lastTable_;
}

void ChangeTracker::ask(Table& table, DatabaseEvent event) {
    auto kind = static_cast<std::size_t>(event);
    table.asked[kind] = true;
    for (std::uint32_t i = 0; i < transaction_.observers.size(); ++i) {
        guarded("observeEvent", [&] {
            if (transaction_.observers[i]->observeEvent(event, table.database, table.lowerName))
                table.interested[kind].push_back(i);
        });
    }
}

void ChangeTracker::note(DatabaseEvent event, const char* databaseName, const char* tableName, std::int64_t rowId) {
    auto number = tableNumber(databaseName, tableName);
    auto& table = transaction_.tables[number];
    auto kind = static_cast<std::uint8_t>(event);
    if (!table.asked[kind]) ask(table, event);
    if (table.touchedAt == notYet && !transaction_.simpleObservers.empty()) {
        table.touchedAt = transaction_.changes.size();
        transaction_.changes.push_back({number, kind, true, rowId});
    }
    if (!table.interested[kind].empty()) transaction_.changes.push_back({number, kind, false, rowId});
}

void ChangeTracker::forgetSince(std::size_t mark) {
    if (mark >= transaction_.changes.size()) return;
    transaction_.changes.resize(mark);
    for (auto& table : transaction_.tables)
        if (table.touchedAt != notYet && table.touchedAt >= mark) table.touchedAt = notYet;
}

bool ChangeTracker::isRegistered(const Transaction& transaction, const std::shared_ptr<TransactionObserver>& observer) {
    if (generation_ == transaction.generation) return true;
    tarvo::platform::MutexLock lock(mutex_);
    return std::find(observers_.begin(), observers_.end(), observer) != observers_.end();
}

bool ChangeTracker::isRegistered(const Transaction& transaction, const std::shared_ptr<SimpleObserver>& observer) {
    if (generation_ == transaction.generation) return true;
    tarvo::platform::MutexLock lock(mutex_);
    return std::find(simpleObservers_.begin(), simpleObservers_.end(), observer) != simpleObservers_.end();
}

void ChangeTracker::notifyChanges(const Transaction& transaction) {
    for (auto& change : transaction.changes) {
        if (change.touch) continue;
        auto& table = transaction.tables[change.table];
        for (auto number : table.interested[change.event]) {
            auto& observer = transaction.observers[number];
            if (!isRegistered(transaction, observer)) continue;
            guarded("didChange", [&] {
                observer->didChange(static_cast<DatabaseEvent>(change.event), table.database, table.lowerName,
                                    change.rowId);
            });
        }
    }
}

void ChangeTracker::notifyCommit(Database& database) {
    auto transaction = std::exchange(transaction_, {});
    notifyChanges(transaction);
    for (auto& observer : transaction.observers)
        if (isRegistered(transaction, observer)) guarded("didCommit", [&] { observer->didCommit(database); });
    std::set<std::string> touched;
    for (auto& table : transaction.tables)
        if (table.touchedAt != notYet) touched.insert(table.lowerName);
    if (touched.empty()) return;
    for (auto& observer : transaction.simpleObservers)
        if (isRegistered(transaction, observer))
            guarded("databaseChanged", [&] { observer->databaseChanged(touched); });
}

void ChangeTracker::notifyRollback(Database& database) {
    auto transaction = std::exchange(transaction_, {});
    for (auto& observer : transaction.observers)
        if (isRegistered(transaction, observer)) guarded("didRollback", [&] { observer->didRollback(database); });
}

}  // namespace kelva
