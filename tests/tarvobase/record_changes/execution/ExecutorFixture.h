#pragma once

#include <map>

#include "platform/Clock.h"
#include "tarvobase/change_queues/TransactionAssembler.h"
#include "tarvobase/record_changes/execution/RecordExecutors.h"
#include "tests/tarvobase/records/sql/RecordTableFixture.h"

namespace tarvo {

/// Knows the executors of a test by their kinds.
class ExecutorsByKind final : public TransactionExecutorDIContract {
public:
    std::map<NTransaction::Kind, std::shared_ptr<TransactionExecutor>> executors;

    std::shared_ptr<TransactionExecutor> getExecutor(const NTransaction& transaction) override {
        return executors.at(transaction.kind);
    }
};

/// The current queue with its executors over real tables and a scripted network.
class ExecutorTest : public RecordTableTest {
protected:
    void SetUp() override {
        RecordTableTest::SetUp();
        platform::Clock::set(platform::Clock::now());
    }
    void TearDown() override {
        manager.reset();
        platform::Clock::release();
        RecordTableTest::TearDown();
    }
    /// Makes the queue, over the modules that are stored by now. Nothing is sent before `startSync`.
    void begin() {
        stores.emplace(Stores::current());
        manager = TransactionAssembler::getTransactionManager(*stores);
        manager->transactionExecutorDI = executors;
        ASSERT_TRUE(manager->initialize());
    }
    template <class Service>
    std::shared_ptr<Service> scripted() {
        auto service = std::make_shared<Service>();
        service->setNetworkAdapter(network);
        return service;
    }
    /// Returns the rows of the queue: id, kind, record, attempts, payload, and the code of an error.
    std::string rows() {
        std::vector<std::string> texts;
        auto queued = stores->currentTransactions()->getTransactions();
        for (auto& row : queued->transactions)
            texts.push_back(std::to_string(row.id) + " " + std::string(caseName(row.kind)) + " " + row.recordId + " " +
                            std::to_string(row.syncAttempt) + " " + json::write(row.payload).value_or("?") +
                            (row.errorResponse ? " " + row.errorResponse->code : ""));
        return text::join(texts, "\n");
    }
    /// Returns the keys of the requests that were sent, each once.
    std::size_t keysSent() const {
        std::set<std::string> keys;
        for (auto& call : network->calls()) keys.insert(call.request.headers.find("x-transaction-id").value_or(""));
        return keys.size();
    }
    static std::string entry(const std::string& members) { return R"({"response":{"result":[{)" + members + "}]}}"; }

    std::optional<Stores> stores;
    std::shared_ptr<TransactionManager> manager;
    std::shared_ptr<ExecutorsByKind> executors = std::make_shared<ExecutorsByKind>();
    std::shared_ptr<ScriptedNetworkAdapter> network = std::make_shared<ScriptedNetworkAdapter>();
};

}  // namespace tarvo
