#include "tarvobase/change_queues/ChangeQueues.h"

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

#include "platform/ProcessState.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/change_queues/TransactionAssembler.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/notes/NotesUseCases.h"
#include "tarvobase/record_changes/internal/ChangeDrain.h"
#include "tarvobase/record_changes/internal/OlderChangeQueue.h"
#include "tarvobase/record_changes/internal/RecordRefetch.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/sync/RecordsSyncDataManager.h"
#include "tarvobase/transaction/RecordIds.h"

namespace tarvo {

namespace {

/// The two queues of a scope.
struct ScopeQueues {
    Scope scope;
    std::shared_ptr<ChangeDrain> drain;
    std::shared_ptr<TransactionManager> manager;
    std::shared_ptr<const ChangeCancellation> cancellation;

    void start() const {
        drain->start();
        manager->startSync();
    }
    void stop(std::function<void()> stopped) const {
        manager->stopSync();
        drain->stop(
            [manager = manager, drain = drain, stopped = std::move(stopped)] { manager->whenResting(stopped); });
    }
    std::int64_t sendCount() const { return drain->sendCount() + manager->startCount(); }
    /// One queue may let changes of the other go, so both must rest in one round.
    void whenResting(std::function<void()> callback) const {
        auto before = sendCount();
        drain->whenResting([*this, before, callback = std::move(callback)]() mutable {
            manager->whenResting([*this, before, callback = std::move(callback)]() mutable {
                drain->whenResting([*this, before, callback = std::move(callback)]() mutable {
                    sendCount() == before ? callback() : whenResting(std::move(callback));
                });
            });
        });
    }
};

/// The lock file stands beside the database, whose changes one process sends at a time. A database in memory belongs to
/// this process alone.
std::shared_ptr<SendingLock> lockOf(const DatabaseAdapter& database) {
    auto path = database.databaseName();
    bool isOnDisk = path.starts_with("/");
    return std::make_shared<SendingLock>(isOnDisk ? std::optional(path + "-changes") : std::nullopt);
}

/// Puts the queues of the scope in force together. Each wakes the other when a record gets its id.
ScopeQueues makeQueues(const Stores& stores) {
    auto lock = lockOf(*stores.databaseAdapter());
    auto manager = TransactionAssembler::getTransactionManager(stores, lock);
    auto records = RecordInDatabase::make(stores.databaseAdapter());
    auto wakeCurrent = [weak = std::weak_ptr<TransactionManager>(manager)] {
        if (auto current = weak.lock()) current->wake();
    };
    auto refetch = RecordRefetch::make(stores, records, RecordsSyncDataManager::make(stores),
                                       std::make_shared<FetchRecordNetworkService>());
    auto fetch = [refetch](auto& moduleName, auto& recordId, auto reason) {
        refetch->fetch(moduleName, recordId, reason);
    };
    ChangeSettlement settlement(stores, records, std::move(fetch), wakeCurrent);
    auto queue =
        std::make_shared<OlderChangeQueue>(stores, std::make_shared<NetworkChangeSender>(), std::move(settlement));
    auto drain = std::make_shared<ChangeDrain>(std::move(queue), std::move(lock));
    manager->resultStored = [weak = std::weak_ptr<ChangeDrain>(drain)] {
        if (auto older = weak.lock()) older->wake();
    };
    manager->resultAccepted = [refetch](auto& transaction) {
        refetch->fetch(transaction.module.rawValue(), transaction.recordId, RecordRefetch::Reason::acceptance);
    };
    manager->lateEditAccepted = [refetch](auto& transaction) {
        refetch->fetch(transaction.module.rawValue(), transaction.recordId, RecordRefetch::Reason::cancelled);
    };
    // A round of sync would not bring what an earlier one has stored beneath the changes.
    auto fetchFormer = [refetch](auto& moduleName, auto& recordId) {
        refetch->fetch(moduleName, recordId, RecordRefetch::Reason::cancelled);
    };
    auto cancellation =
        std::make_shared<ChangeCancellation>(ChangeCancellation::Parts{.stores = stores,
                                                                       .records = records,
                                                                       .manager = manager,
                                                                       .fetch = std::move(fetchFormer),
                                                                       .removeSound = NotesAssembler::removeSound,
                                                                       .wake = [drain, wakeCurrent] {
                                                                           drain->wake();
                                                                           wakeCurrent();
                                                                       }});
    return {stores.scope, drain, manager, cancellation};
}

/// Asks the manager, whose ids are above those that its database knows.
class RecordIdsOfQueues final : public NewRecordIdGenerator {
public:
    std::string getNewRecordId() override { return current()->getNewRecordId(); }
    void resetRecordId() override { current()->resetRecordId(); }

private:
    static std::shared_ptr<NewRecordIdGenerator> current() {
        if (auto manager = ChangeQueues::shared().transactionManager()) return manager;
        auto stores = Stores::current();
        return std::make_shared<RecordIds>(stores, stores.userDefaults);
    }
};

void callLater(std::function<void()> callback) {
    if (callback) DispatchQueue::serial("tarvo.changes.end")->async(std::move(callback));
}

}  // namespace

struct ChangeQueues::Entries {
    std::optional<ScopeQueues> of(const Scope& scope) {
        platform::MutexLock lock(mutex);
        return find(scope);
    }
    /// Returns the scope's queues, which are the given ones unless another thread has added some meanwhile: two drains
    /// of one scope would take each other's claims for those of a process that has ended. `formers` gets the queues of
    /// other scopes.
    ScopeQueues add(ScopeQueues made, std::vector<ScopeQueues>& formers) {
        platform::MutexLock lock(mutex);
        if (auto present = find(made.scope)) return *present;
        formers = std::exchange(entries, {});
        entries.push_back(made);
        return made;
    }
    std::optional<ScopeQueues> find(const Scope& scope) TARVO_REQUIRES(mutex) {
        auto isIts = [&](auto& entry) {
            return entry.scope.databaseAdapter == scope.databaseAdapter && entry.scope.account == scope.account &&
                   entry.scope.organisation == scope.organisation;
        };
        auto found = std::find_if(entries.begin(), entries.end(), isIts);
        return found == entries.end() ? std::nullopt : std::optional(*found);
    }
    /// Returns the queues of the scope in force, made if there are none, or nullopt without a database.
    std::optional<ScopeQueues> current() {
        auto stores = Stores::current();
        if (!stores.databaseAdapter()) return std::nullopt;
        if (auto present = of(stores.scope)) return present;
        std::vector<ScopeQueues> formers;
        auto made = makeQueues(stores);
        auto queues = add(made, formers);
        // Another thread's manager has been initialized, and may be sending: this one would take that for the work of a
        // process that has ended.
        if (queues.manager == made.manager) made.manager->initialize();
        // What they send would not count any more.
        for (auto& former : formers) former.stop([] {});
        return queues;
    }
    void setOn(bool value) {
        platform::MutexLock lock(mutex);
        isOn = value;
    }
    bool wasStarted() {
        platform::MutexLock lock(mutex);
        return isOn;
    }
    std::vector<ScopeQueues> all() {
        platform::MutexLock lock(mutex);
        return entries;
    }

    platform::Mutex mutex;
    bool isOn TARVO_GUARDED_BY(mutex) = false;
    std::vector<ScopeQueues> entries TARVO_GUARDED_BY(mutex);
};

ChangeQueues& ChangeQueues::shared() { return platform::ProcessState::current().get<ChangeQueues>(); }
ChangeQueues::ChangeQueues() : entries_(std::make_shared<Entries>()) {}
ChangeQueues::~ChangeQueues() = default;

void ChangeQueues::start() {
    auto queues = entries_->current();
    if (!queues) return;
    entries_->setOn(true);
    queues->start();
}

void ChangeQueues::stop(std::function<void()> stopped) {
    entries_->setOn(false);
    auto all = entries_->all();
    if (all.empty()) return callLater(std::move(stopped));
    auto left = std::make_shared<std::atomic<std::size_t>>(all.size());
    for (auto& queues : all)
        queues.stop([left, stopped] {
            if (--*left == 0 && stopped) stopped();
        });
}

void ChangeQueues::wake(const Scope& scope) {
    if (auto queues = entries_->of(scope)) return queues->drain->wake();
    if (entries_->wasStarted() && scope.isCurrent()) start();
}

ChangeQueueStatus ChangeQueues::status() const {
    auto queues = entries_->of(Scope::current());
    return queues ? queues->drain->status() : ChangeQueueStatus();
}

ChangeQueueStatus ChangeQueues::currentStatus() const {
    auto queues = entries_->of(Scope::current());
    return queues ? queues->manager->status() : ChangeQueueStatus();
}

std::shared_ptr<TransactionManager> ChangeQueues::transactionManager() {
    auto queues = entries_->current();
    return queues ? queues->manager : nullptr;
}

std::shared_ptr<NewRecordIdGenerator> ChangeQueues::recordIds() { return std::make_shared<RecordIdsOfQueues>(); }

Result<std::vector<std::int64_t>, CancelRefusal> ChangeQueues::cancel(const CancelRequest& request) {
    auto queues = entries_->current();
    if (!queues) return CancelRefusal();
    return queues->cancellation->cancel(request);
}

void ChangeQueues::whenResting(std::function<void()> callback) {
    auto queues = entries_->of(Scope::current());
    queues ? queues->whenResting(std::move(callback)) : callLater(std::move(callback));
}

}  // namespace tarvo
