#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "kelva_db/Observers.h"
#include "platform/ThreadSafety.h"

namespace kelva {

/// Collects the row changes of the writer's transaction and notifies the observers once it has been committed.
/// Observers are added and removed on any thread; the rest runs on the writer's queue.
class ChangeTracker {
public:
    void add(std::shared_ptr<TransactionObserver> observer);
    void add(std::shared_ptr<SimpleObserver> observer);
    void remove(const TransactionObserver* observer);
    void remove(const SimpleObserver* observer);
    void removeAll();

    /// Begins a transaction with the observers of now. Observers that are added later are notified of the next one.
    void begin();
    /// Whether the transaction under way has observers.
    bool watching() const { return !transaction_.observers.empty() || !transaction_.simpleObservers.empty(); }

    /// A row has changed. Called for every row from inside SQLite: asks each observer once per table and kind.
    void note(DatabaseEvent event, const char* databaseName, const char* tableName, std::int64_t rowId);

    /// A point to go back to when what follows it is undone.
    std::size_t mark() const { return transaction_.changes.size(); }
    void forgetSince(std::size_t mark);

    /// Notifies the observers of how the transaction ended, and forgets it. They may use all operations of the
    /// database.
    void notifyCommit(Database& database);
    void notifyRollback(Database& database);

private:
    static constexpr std::size_t notYet = SIZE_MAX;
    struct Table {
        std::string database, name, lowerName;
        std::vector<std::uint32_t> interested[3];  // positions of observers, for each event
        bool asked[3] = {};
        std::size_t touchedAt = notYet;  // change that first touched it, for the simple observers
    };
    struct Change {
        std::uint32_t table;
        std::uint8_t event;
        bool touch;  // stands for the table alone, not for a row
        std::int64_t rowId;
    };
    struct Transaction {
        std::vector<std::shared_ptr<TransactionObserver>> observers;
        std::vector<std::shared_ptr<SimpleObserver>> simpleObservers;
        std::uint64_t generation = 0;
        std::vector<Table> tables;
        std::vector<Change> changes;
    };

    std::uint32_t tableNumber(const char* databaseName, const char* tableName);
    void ask(Table& table, DatabaseEvent event);
    void notifyChanges(const Transaction& transaction);
    /// Whether the observer is still registered: one observer may remove another while both are being notified.
    bool isRegistered(const Transaction& transaction, const std::shared_ptr<TransactionObserver>& observer);
    bool isRegistered(const Transaction& transaction, const std::shared_ptr<SimpleObserver>& observer);

    tarvo::platform::Mutex mutex_;  // guards the two lists; never held while an observer is called
    std::vector<std::shared_ptr<TransactionObserver>> observers_ TARVO_GUARDED_BY(mutex_);
    std::vector<std::shared_ptr<SimpleObserver>> simpleObservers_ TARVO_GUARDED_BY(mutex_);
    std::atomic<std::uint64_t> generation_{0};  // counts the changes of the lists

    Transaction transaction_;
    std::uint32_t lastTable_ = 0;
};

}  // namespace kelva
