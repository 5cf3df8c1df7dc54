#include "host/serve/HostTransactionCalls.h"

#include "bridge/forms/JsonForm.h"
#include "bridge/forms/RecordForms.h"
#include "bridge/forms/TransactionForms.h"
#include "tarvobase/change_queues/ChangeQueues.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/transaction/AddEditRecordTransactionHandler.h"

namespace tarvo::host {

namespace {

using bridge::CallPtr;
using bridge::JsonTransaction;
using bridge::toJson;
using Manager = TransactionManager;
using Ids = std::vector<std::int64_t>;
using Texts = std::vector<std::string>;

struct EmptyRequest {
    static constexpr auto fields() { return describe(); }
};
struct AddRequest {
    JsonTransaction transaction;
    std::optional<Texts> lookupRecords;
    std::optional<std::vector<bridge::JsonDependency>> dependencies;
    static constexpr auto fields() {
        return describe(field("transaction", &AddRequest::transaction),
                        field("lookupRecords", &AddRequest::lookupRecords),
                        field("dependencies", &AddRequest::dependencies));
    }
};
struct AddMergedRequest {
    JsonTransaction transaction;
    std::optional<Texts> lookupRecords;
    Ids merged;
    static constexpr auto fields() {
        return describe(field("transaction", &AddMergedRequest::transaction),
                        field("lookupRecords", &AddMergedRequest::lookupRecords),
                        field("merged", &AddMergedRequest::merged));
    }
};
struct GetRequest {
    std::optional<Ids> ids;
    std::optional<Texts> recordIds;
    std::optional<std::vector<NTransaction::Kind>> kinds;
    std::optional<std::int64_t> limit;
    static constexpr auto fields() {
        return describe(field("ids", &GetRequest::ids), field("recordIds", &GetRequest::recordIds),
                        field("kinds", &GetRequest::kinds), field("limit", &GetRequest::limit));
    }
};
struct LastRequest {
    std::string recordId;
    std::vector<NTransaction::Kind> kinds;
    static constexpr auto fields() {
        return describe(field("recordId", &LastRequest::recordId), field("kinds", &LastRequest::kinds));
    }
};
struct RemoveRequest {
    std::optional<Ids> ids;
    std::optional<std::string> recordId;
    static constexpr auto fields() {
        return describe(field("ids", &RemoveRequest::ids), field("recordId", &RemoveRequest::recordId));
    }
};
struct IdRequest {
    std::int64_t id = 0;
    static constexpr auto fields() { return describe(field("id", &IdRequest::id)); }
};
struct ActivateRequest {
    std::optional<std::int64_t> id;  // all if absent
    static constexpr auto fields() { return describe(field("id", &ActivateRequest::id)); }
};
struct ErrorRequest {
    std::int64_t id = 0;
    ErrorResponse error;
    static constexpr auto fields() {
        return describe(field("id", &ErrorRequest::id), field("error", &ErrorRequest::error));
    }
};
struct ReplaceRequest {
    std::map<std::string, std::string> identifiers;
    std::int64_t transactionId = 0;
    static constexpr auto fields() {
        return describe(field("identifiers", &ReplaceRequest::identifiers),
                        field("transactionId", &ReplaceRequest::transactionId));
    }
};
struct CreateAndDestroyRequest {
    std::string recordId;
    NTransaction::Kind create = NTransaction::Kind::addRecord, destroy = NTransaction::Kind::deleteRecord;
    static constexpr auto fields() {
        using R = CreateAndDestroyRequest;
        return describe(field("recordId", &R::recordId), field("create", &R::create), field("destroy", &R::destroy));
    }
};
struct PayloadRequest {
    bridge::JsonRecord record;
    bool ignoreNullAndEmpty = false;
    static constexpr auto fields() {
        return describe(field("record", &PayloadRequest::record),
                        optionalField("ignoreNullAndEmpty", &PayloadRequest::ignoreNullAndEmpty));
    }
};
struct MergePayloadsRequest {
    std::string moduleName;
    std::vector<ValueMap> payloads;
    static constexpr auto fields() {
        return describe(field("moduleName", &MergePayloadsRequest::moduleName),
                        field("payloads", &MergePayloadsRequest::payloads));
    }
};
struct ExecuteRequest {
    JsonTransaction transaction;
    static constexpr auto fields() { return describe(field("transaction", &ExecuteRequest::transaction)); }
};

// Far above what the queue gives, and small enough that JSON programs read it exactly.
constexpr std::int64_t highestId = std::int64_t(1) << 53;
constexpr const char* notStored = "the queue could not be written";
constexpr const char* notRead = "the queue cannot be read";

void finishStored(const CallPtr& call, bool isStored) { isStored ? call->done() : call->refuse(notStored); }

void finishRead(const CallPtr& call, const Manager::Transactions& transactions) {
    auto dependencies = Stores::current().transactionDependencies()->getTransactionDependencies();
    if (!transactions || !dependencies) return call->refuse(notRead);
    std::vector<JsonTransaction> forms;
    for (auto& transaction : *transactions) {
        auto form = JsonTransaction::of(transaction);
        form.dependencies.emplace();
        for (auto& each : *dependencies)
            if (each.transactionId == transaction.id)
                form.dependencies->push_back({each.dependentTransaction, each.kind});
        forms.push_back(std::move(form));
    }
    call->done("response", ValueMap{{"transactions", toJson(forms)}});
}

std::optional<FieldList> fieldsOfModule(const std::string& moduleName) {
    auto fields =
        FieldListAssembler::getFieldListDM(Stores::current().databaseAdapter())->getFields(moduleName, std::nullopt);
    return fields ? std::optional(std::move(fields).value()) : std::nullopt;
}

AddEditRecordTransactionHandler handlerFor(Manager& manager) {
    return {manager, Stores::current(), CommonConfigration::sharedInstance().maxSingleMerge.get()};
}

/// Returns what is wrong with a transaction that a caller has made, or null. The queue gives ids from 1.
const char* faultOf(const JsonTransaction& transaction) {
    if (transaction.recordId.empty()) return "`recordId` is empty";
    if (transaction.id && (*transaction.id < 1 || *transaction.id >= highestId)) return "`id` is out of range";
    return nullptr;
}

void add(Manager& manager, const AddRequest& request, const CallPtr& call) {
    if (auto fault = faultOf(request.transaction)) return call->refuse(fault);
    auto transaction = request.transaction.transaction(request.transaction.id ? 0 : manager.getNewTransactionId());
    Manager::Dependencies dependencies;
    for (auto& each : request.dependencies.value_or(std::vector<bridge::JsonDependency>()))
        dependencies.push_back({transaction.id, each.dependentTransaction, each.kind});
    bool isStored = manager.addTransaction(transaction, request.lookupRecords.value_or(Texts()), dependencies);
    isStored ? call->done("response", ValueMap{{"id", transaction.id}}) : call->refuse(notStored);
}

void addMerged(Manager& manager, const AddMergedRequest& request, const CallPtr& call) {
    if (auto fault = faultOf(request.transaction)) return call->refuse(fault);
    auto transaction = request.transaction.transaction(request.transaction.id ? 0 : manager.getNewTransactionId());
    bool isStored = manager.addMergedTransaction(transaction, request.lookupRecords.value_or(Texts()), request.merged,
                                                 Manager::Attempts::beginAgain);
    isStored ? call->done("response", ValueMap{{"id", transaction.id}}) : call->refuse(notStored);
}

void get(const GetRequest& request, const CallPtr& call) {
    auto queue = Stores::current().currentTransactions();
    if (request.recordIds)
        return finishRead(call, queue->getTransactionsWithRecordIds(*request.recordIds, request.kinds, request.limit));
    if (request.ids) return finishRead(call, queue->getTransactionsWithIds(*request.ids));
    auto all = queue->getTransactions();
    finishRead(call, all ? std::optional(std::move(all->transactions)) : std::nullopt);
}

void remove(Manager& manager, const RemoveRequest& request, const CallPtr& call) {
    if (request.ids.has_value() == request.recordId.has_value()) return call->refuse("give ids or recordId");
    finishStored(call, request.ids ? manager.deleteTransactionWithIds(*request.ids)
                                   : manager.deleteTransactionWithRecordId(*request.recordId));
}

/// Runs one of the handler's operations with a stored transaction and the fields of its module.
template <class Operation>
void handle(Manager& manager, std::int64_t id, const CallPtr& call, const Operation& operation) {
    auto stored = Stores::current().currentTransactions()->getTransactionsWithIds({id});
    if (!stored) return call->refuse(notRead);
    if (stored->empty()) return call->refuse("there is no transaction " + std::to_string(id));
    auto fields = fieldsOfModule(stored->front().module.rawValue());
    if (!fields) return call->refuse("the fields of the module are not stored");
    auto handler = handlerFor(manager);
    finishStored(call, operation(handler, stored->front(), *fields));
}

void payload(Manager& manager, const PayloadRequest& request, const CallPtr& call) {
    auto record = request.record.record();
    auto fields = fieldsOfModule(record.moduleName());
    if (!fields) return call->refuse("the fields of the module are not stored");
    auto handler = handlerFor(manager);
    auto made = handler.getPayload(record, *fields, request.ignoreNullAndEmpty);
    auto lookups = handler.getLookupRecords(made, *fields);
    call->done("response", ValueMap{{"payload", std::move(made)}, {"lookupRecords", toJson(lookups)}});
}

void mergePayloads(Manager& manager, const MergePayloadsRequest& request, const CallPtr& call) {
    auto fields = fieldsOfModule(request.moduleName);
    if (!fields) return call->refuse("the fields of the module are not stored");
    call->done("response", ValueMap{{"payload", handlerFor(manager).merge(request.payloads, *fields)}});
}

void execute(Manager& manager, const ExecuteRequest& request, const CallPtr& call) {
    auto transaction = request.transaction.transaction(request.transaction.id ? 0 : manager.getNewTransactionId());
    auto executor = manager.transactionExecutorDI->getExecutor(transaction);
    executor->execute(transaction, [call, executor](const TransactionResult& result) {
        if (!result.outcome) return call->done("response", ValueMap{{"failure", toJson(result.outcome.error())}});
        // Outside the queue nobody stores the rows of the executor but this.
        auto database = Stores::current().databaseAdapter();
        bool isStored = !result.store || (database && database->transaction("execute", result.store));
        isStored ? call->done("response", ValueMap{{"success", toJson(result.outcome.value())}})
                 : call->refuse(notStored);
    });
}

}  // namespace

void addTransactionCalls(bridge::Registry& registry) {
    // Adds a call that needs the manager of the scope in force.
    auto on = [&registry]<class Request>(const std::string& name,
                                         void (*operation)(Manager&, const Request&, const CallPtr&)) {
        registry.addOperation<Request>("host.transaction." + name,
                                       [operation](const Request& request, const CallPtr& call) {
                                           auto manager = ChangeQueues::shared().transactionManager();
                                           if (!manager) return call->refuse("no database is open");
                                           operation(*manager, request, call);
                                       });
    };
    using None = EmptyRequest;
    on("add", add);
    on("addMerged", addMerged);
    on.operator()<GetRequest>("get", [](Manager&, auto& request, auto& call) { get(request, call); });
    on.operator()<LastRequest>("last", [](Manager& manager, auto& request, auto& call) {
        finishRead(call, manager.getLastTransaction(request.recordId, request.kinds));
    });
    on("delete", remove);
    on.operator()<IdRequest>("reset", [](Manager& manager, auto& request, auto& call) {
        bool isStored = manager.resetTransaction(request.id);
        finishStored(call, isStored);
    });
    on.operator()<IdRequest>("merge", [](Manager& manager, auto& request, auto& call) {
        handle(manager, request.id, call,
               [](auto& handler, auto& stored, auto& fields) { return handler.mergeTransaction(stored, fields); });
    });
    on.operator()<IdRequest>("handleError", [](Manager& manager, auto& request, auto& call) {
        handle(manager, request.id, call, [](auto& handler, auto& stored, auto& fields) {
            return handler.handleError(stored.errorResponse.value_or(ErrorResponse()), stored, fields);
        });
    });
    on.operator()<ActivateRequest>("activate", [](Manager& manager, auto& request, auto& call) {
        finishStored(call, request.id ? manager.activateTransactionWithId(*request.id)
                                      : manager.activateAllInactiveTransactions());
    });
    on.operator()<ErrorRequest>("updateError", [](Manager& manager, auto& request, auto& call) {
        finishStored(call, manager.updateError(request.id, request.error));
    });
    on.operator()<ReplaceRequest>("replace", [](Manager& manager, auto& request, auto& call) {
        finishStored(call, manager.replaceRecordIdentifiers(request.identifiers, request.transactionId));
    });
    on.operator()<CreateAndDestroyRequest>("isCreateAndDestroy", [](Manager& manager, auto& request, auto& call) {
        auto value = manager.isCreateAndDestoryTransaction(request.recordId, request.create, request.destroy);
        value ? call->done("response", ValueMap{{"value", *value}}) : call->refuse(notRead);
    });
    on.operator()<None>("initialize", [](Manager& manager, auto&, auto& call) {
        bool isStored = manager.initialize();
        manager.wake();
        finishStored(call, isStored);
    });
    on.operator()<None>("resetIds", [](Manager& manager, auto&, auto& call) {
        manager.resetTransactionId();
        manager.resetRecordId();
        call->done();
    });
    on.operator()<None>("newId", [](Manager& manager, auto&, auto& call) {
        call->done("response", ValueMap{{"id", manager.getNewTransactionId()}});
    });
    on.operator()<None>("newRecordId", [](Manager& manager, auto&, auto& call) {
        call->done("response", ValueMap{{"id", manager.getNewRecordId()}});
    });
    on("payload", payload);
    on("mergePayloads", mergePayloads);
    on("execute", execute);
}

}  // namespace tarvo::host
