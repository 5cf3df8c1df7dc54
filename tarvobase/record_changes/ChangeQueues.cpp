#include "tarvobase/record_changes/ChangeQueues.h"

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

#include "platform/ProcessState.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/record_changes/internal/OlderChangeQueue.h"
#include "tarvobase/record_changes/internal/RecordRefetch.h"
#include "tarvobase/records/sql/RecordInDatabase.h"

namespace tarvo {

namespace {

/// The lock stands beside the database, which has one drain at a time among all processes. A database in memory belongs
/// to this process alone.
std::optional<std::string> lockFileOf(const DatabaseAdapter& database) {
    auto path = database.databaseName();
    bool isOnDisk = path.starts_with("/");
    return isOnDisk ? std::optional(path + "-changes") : std::nullopt;
}

/// Puts the drain of the scope in force together.
std::shared_ptr<ChangeDrain> makeDrain(const Stores& stores) {
    auto records = RecordInDatabase::make(stores.databaseAdapter());
    auto fetch = [refetch = RecordRefetch::make(stores, records, std::make_shared<FetchRecordNetworkService>())](
                     auto& moduleName, auto& recordId, auto reason) { refetch->fetch(moduleName, recordId, reason); };
    ChangeSettlement settlement(stores, records, std::move(fetch));
    auto queue =
        std::make_shared<OlderChangeQueue>(stores, std::make_shared<NetworkChangeSender>(), std::move(settlement));
    return std::make_shared<ChangeDrain>(std::move(queue), lockFileOf(*stores.databaseAdapter()));
}

}  // namespace

struct ChangeQueues::Drains {
    struct Entry {
        Scope scope;
        std::shared_ptr<ChangeDrain> drain;
    };

    std::shared_ptr<ChangeDrain> of(const Scope& scope) {
        platform::MutexLock lock(mutex);
        return find(scope);
    }
    /// Returns the scope's drain, which is the given one unless another thread has added one meanwhile: two drains of
    /// one scope would take each other's claims for those of a process that has ended. `formers` gets the drains of
    /// other scopes.
    std::shared_ptr<ChangeDrain> add(const Scope& scope, std::shared_ptr<ChangeDrain> drain,
                                     std::vector<Entry>& formers) {
        platform::MutexLock lock(mutex);
        isOn = true;
        if (auto present = find(scope)) return present;
        formers = std::exchange(entries, {});
        entries.push_back({scope, drain});
        return drain;
    }
    std::shared_ptr<ChangeDrain> find(const Scope& scope) TARVO_REQUIRES(mutex) {
        auto isIts = [&](auto& entry) {
            return entry.scope.databaseAdapter == scope.databaseAdapter && entry.scope.account == scope.account &&
                   entry.scope.organisation == scope.organisation;
        };
        auto found = std::find_if(entries.begin(), entries.end(), isIts);
        return found == entries.end() ? nullptr : found->drain;
    }
    std::vector<Entry> takeAll() {
        platform::MutexLock lock(mutex);
        isOn = false;
        return std::exchange(entries, {});
    }

    platform::Mutex mutex;
    bool isOn TARVO_GUARDED_BY(mutex) = false;
    std::vector<Entry> entries TARVO_GUARDED_BY(mutex);
};

ChangeQueues& ChangeQueues::shared() { return platform::ProcessState::current().get<ChangeQueues>(); }
ChangeQueues::ChangeQueues() : drains_(std::make_shared<Drains>()) {}
ChangeQueues::~ChangeQueues() = default;

void ChangeQueues::start() {
    auto stores = Stores::current();
    if (!stores.databaseAdapter()) return;
    auto drain = drains_->of(stores.scope);
    if (!drain) {
        std::vector<Drains::Entry> formers;
        drain = drains_->add(stores.scope, makeDrain(stores), formers);
        // What they send would not count any more.
        for (auto& former : formers) former.drain->stop();
    }
    drain->start();
}

void ChangeQueues::stop(std::function<void()> stopped) {
    auto entries = drains_->takeAll();
    if (entries.empty()) {
        if (stopped) DispatchQueue::serial("tarvo.changes.end")->async(std::move(stopped));
        return;
    }
    // A drain lives until its last answer: its own callback holds it.
    auto left = std::make_shared<std::atomic<std::size_t>>(entries.size());
    for (auto& entry : entries)
        entry.drain->stop([drain = entry.drain, left, stopped] {
            if (--*left == 0 && stopped) stopped();
        });
}

void ChangeQueues::wake(const Scope& scope) {
    if (auto drain = drains_->of(scope)) return drain->wake();
    bool isOn = false;
    {
        platform::MutexLock lock(drains_->mutex);
        isOn = drains_->isOn;
    }
    if (isOn && scope.isCurrent()) start();
}

ChangeQueueStatus ChangeQueues::status() const {
    auto drain = drains_->of(Scope::current());
    return drain ? drain->status() : ChangeQueueStatus();
}

void ChangeQueues::whenResting(std::function<void()> callback) {
    if (auto drain = drains_->of(Scope::current())) return drain->whenResting(std::move(callback));
    DispatchQueue::serial("tarvo.changes.end")->async(std::move(callback));
}

}  // namespace tarvo
