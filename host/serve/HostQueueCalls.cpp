#include "host/serve/HostQueueCalls.h"

#include <atomic>
#include <chrono>

#include "bridge/forms/JsonForm.h"
#include "platform/Text.h"
#include "tarvobase/change_queues/ChangeQueues.h"
#include "tarvobase/change_queues/QueuedChanges.h"
#include "tarvobase/change_queues/RecordChangesAssembler.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/usecase/Usecase.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo::host {

namespace {

using bridge::CallPtr;
using bridge::toJson;

struct QueueRequest {
    static constexpr auto fields() { return describe(); }
};
struct QueueListRequest {
    std::optional<std::string> moduleName, recordId;
    static constexpr auto fields() {
        return describe(field("moduleName", &QueueListRequest::moduleName),
                        field("recordId", &QueueListRequest::recordId));
    }
};
struct ContentRequest {
    std::int64_t number = 0;
    static constexpr auto fields() { return describe(field("number", &ContentRequest::number)); }
};
struct OutcomesRequest {
    std::vector<std::int64_t> numbers;
    static constexpr auto fields() { return describe(field("numbers", &OutcomesRequest::numbers)); }
};
struct RetryRequest {
    std::optional<std::vector<std::int64_t>> numbers;  // all that have failed if absent
    static constexpr auto fields() { return describe(field("numbers", &RetryRequest::numbers)); }
};
struct IdleRequest {
    std::optional<std::int64_t> seconds;  // the longest time to wait
    static constexpr auto fields() { return describe(field("seconds", &IdleRequest::seconds)); }
};

struct UploadRequest {
    std::string recordID, fileURL, moduleName, parentID;
    static constexpr auto fields() {
        return describe(field("recordID", &UploadRequest::recordID), field("fileURL", &UploadRequest::fileURL),
                        field("moduleName", &UploadRequest::moduleName), field("parentID", &UploadRequest::parentID));
    }
};

constexpr const char* unreadable = "the queue cannot be read";

QueuedChanges queuedChanges() { return QueuedChanges(Stores::current()); }
auto listedChanges() {
    auto& queues = ChangeQueues::shared();
    return queuedChanges().list(queues.status(), queues.currentStatus());
}

void list(const QueueListRequest& request, const CallPtr& call) {
    auto changes = listedChanges();
    if (!changes) return call->refuse(unreadable);
    std::erase_if(*changes, [&](auto& change) {
        return (request.moduleName && change.moduleName != *request.moduleName) ||
               (request.recordId && change.recordId != *request.recordId);
    });
    call->done("response", ValueMap{{"changes", toJson(*changes)}});
}

void content(const ContentRequest& request, const CallPtr& call) {
    auto content = queuedChanges().content(request.number);
    if (!content) return call->refuse("there is no change " + std::to_string(request.number));
    ValueMap response{{"uriData", content->uriData.text()}};
    if (content->body) response.set("body", content->body->text());
    call->done("response", std::move(response));
}

void outcomes(const OutcomesRequest& request, const CallPtr& call) {
    auto outcomes = queuedChanges().outcomes(request.numbers);
    if (!outcomes) return call->refuse(unreadable);
    call->done("response", ValueMap{{"outcomes", toJson(*outcomes)}});
}

void retry(const RetryRequest& request, const CallPtr& call) {
    auto numbers = queuedChanges().retry(request.numbers.value_or(std::vector<std::int64_t>()));
    if (!numbers) return call->refuse(unreadable);
    ChangeQueues::shared().start();
    call->done("response", ValueMap{{"numbers", toJson(*numbers)}});
}

void cancel(const CancelRequest& request, const CallPtr& call) {
    auto cancelled = ChangeQueues::shared().cancel(request);
    if (!cancelled) {
        auto& refusal = cancelled.error();
        return call->refuse(refusal.message(), ValueMap{{"numbers", toJson(refusal.numbers)}});
    }
    call->done("response", ValueMap{{"numbers", toJson(cancelled.value())}});
}

/// A queue that cannot be read is not empty.
void answerAtRest(const CallPtr& call) {
    auto changes = listedChanges();
    if (!changes) return call->refuse(unreadable);
    call->done("response", ValueMap{{"isEmpty", changes->empty()}, {"changes", toJson(*changes)}});
}

void idle(const IdleRequest& request, const CallPtr& call) {
    auto isAnswered = std::make_shared<std::atomic<bool>>(false);
    auto answer = [call, isAnswered] {
        if (isAnswered->exchange(true)) return;
        answerAtRest(call);
        // The timer may hold the call for long.
        call->finish();
    };
    ChangeQueues::shared().whenResting(answer);
    if (request.seconds) UsecaseQueue::queue()->asyncAfter(std::chrono::seconds(*request.seconds), answer);
}

/// Attachments have no operation of their own yet. This does what one does here: the attachment's row and the change,
/// at once.
void upload(const UploadRequest& request, const CallPtr& call) {
    auto parts = RecordChangesAssembler::parts();
    auto& stores = parts.stores;
    std::string attachments(rawText(ModuleIdentifier::Case::attachments));
    auto module = stores.modules()->getModule(ModuleIdentifier::fromModuleName(attachments));
    auto parents = stores.modules()->getModule(ModuleIdentifier::fromModuleName(request.moduleName));
    if (!module || !parents) return call->refuse("the module, or that of attachments, is not stored");
    auto alias = stores.recordIdAliases()->realId(request.moduleName, request.parentID);
    auto parentId = alias && alias.value() ? *alias.value() : request.parentID;
    auto& names = *stores.scope.naming.constant;
    Record row(request.recordID, attachments);
    row.set(names.recordTitle, text::split(request.fileURL, "/").back());
    row.set(names.seid, parentId);
    RecordTransactionManagerProtocol::Queued queued;
    auto& database = stores.databaseAdapter();
    bool isStored = database && database->transaction("queue an upload", [&] {
        if (!parts.recordPersistance->storeRecord(row, attachments)) return false;
        queued = parts.editRecordTransactionManager->uploadAttachment(request.recordID, parentId, module.value(),
                                                                      parents.value(), request.fileURL);
        return queued.has_value();
    });
    if (!isStored) return call->refuse("the upload could not be stored");
    call->done("response", ValueMap{{"number", queued->number}});
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
    registry.addOperation<QueueListRequest>("host.queue.list", list);
    registry.addOperation<ContentRequest>("host.queue.content", content);
    registry.addOperation<OutcomesRequest>("host.queue.outcomes", outcomes);
    registry.addOperation<RetryRequest>("host.queue.retry", retry);
    registry.addOperation<CancelRequest>("host.queue.cancel", cancel);
    registry.addOperation<IdleRequest>("host.queue.idle", idle);
    registry.addOperation<UploadRequest>("host.queue.upload", upload);
}

}  // namespace tarvo::host
