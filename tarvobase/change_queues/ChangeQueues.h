#pragma once

#include <functional>
#include <memory>
#include <string>

#include "tarvobase/change_queues/ChangeCancellation.h"
#include "tarvobase/configuration/Scope.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/transaction/ChangeQueueStatus.h"
#include "tarvobase/transaction/TransactionManager.h"

namespace tarvo {

/// Sends the changes that wait in the queues of the open databases: the older queue through its drain, the current one
/// through its manager. There is one pair per account, organisation and database; what makes changes reaches it through
/// here. Any thread may use it, and nothing waits unless it says so.
class ChangeQueues {
public:
    /// Returns the queues of this process.
    static ChangeQueues& shared();
    ChangeQueues();
    ~ChangeQueues();

    /// Sends the changes of the account and organisation in force until `stop`. A host calls it when it has opened a
    /// database, and after each switch; calling it again ends a wait. Without an open database it sends nothing. The
    /// first call for a scope blocks for the database.
    void start();
    /// Stops sending for all scopes. The answers of requests on their way are still stored. `stopped` is called on a
    /// background queue when none is left.
    void stop(std::function<void()> stopped = {});
    /// Call it after a change was stored in the older queue. It ends a wait, and begins with an organisation that was
    /// chosen after `start`. Queues that are off stay off.
    void wake(const Scope& scope);
    /// Returns what the older queue of the scope in force does.
    ChangeQueueStatus status() const;
    /// Returns the same of the current queue.
    ChangeQueueStatus currentStatus() const;
    /// Returns the manager of the current queue of the scope in force, also while nothing is sent. Returns null without
    /// an open database. The first call for a scope blocks for the database.
    std::shared_ptr<TransactionManager> transactionManager();
    /// Returns the source of temporary ids for `CommonConfigration.recordIDGenerator`: the manager of the scope in
    /// force at each call, and the settings alone while no database is open.
    static std::shared_ptr<NewRecordIdGenerator> recordIds();
    /// Takes changes of either queue of the scope in force out of it; see `ChangeCancellation::cancel`. Without an open
    /// database nothing is cancelled.
    Result<std::vector<std::int64_t>, CancelRefusal> cancel(const CancelRequest& request);
    /// Calls back on a background queue once nothing of the scope in force is on its way, and nothing can go at the
    /// moment.
    void whenResting(std::function<void()> callback);

private:
    struct Entries;
    const std::shared_ptr<Entries> entries_;
};

}  // namespace tarvo
