#include "host/serve/HostQueueCalls.h"

#include "bridge/forms/JsonForm.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/record_changes/ChangeQueues.h"

namespace tarvo::host {

namespace {

using bridge::CallPtr;

struct QueueRequest {
    static constexpr auto fields() { return describe(); }
};

/// A queue that cannot be read is not empty.
void answerAtRest(const CallPtr& call) {
    auto queued = Stores::current().transactions()->getTransactions();
    bool isEmpty = queued && queued->transactions.empty() && queued->unreadable.empty();
    call->done("response", ValueMap{{"isEmpty", isEmpty}});
}

}  // namespace

void addQueueCalls(bridge::Registry& registry) {
    registry.addOperation<QueueRequest>("host.queue.start", [](QueueRequest, const CallPtr& call) {
        ChangeQueues::shared().start();
        call->done();
    });
    registry.addOperation<QueueRequest>("host.queue.stop", [](QueueRequest, const CallPtr& call) {
        ChangeQueues::shared().stop([call] { call->done(); });
    });
    registry.addOperation<QueueRequest>("host.queue.idle", [](QueueRequest, const CallPtr& call) {
        ChangeQueues::shared().whenResting([call] { answerAtRest(call); });
    });
}

}  // namespace tarvo::host
