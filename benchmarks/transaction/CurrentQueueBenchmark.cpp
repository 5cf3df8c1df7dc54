#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <string>

#include "benchmarks/kelva/HandWritten.h"
#include "benchmarks/kelva/Prepared.h"
#include "benchmarks/record_changes/SignedInAccount.h"
#include "platform/Random.h"
#include "tarvobase/record_changes/wire/AddEditRecordNetworkService.h"

// Measures the current queue: finding the next transaction, and sending a thousand edits, from the start of the queue
// to its rest. The floors run the bare statements with hand-written code, and send the same requests one at a time with
// the same service, each between the two commits that a change costs which must not be lost.
namespace tarvo::benchmarks {

namespace {

using kelva::benchmarks::HandWritten;
using kelva::benchmarks::Prepared;
using Kind = NTransaction::Kind;

constexpr std::int64_t queuedCount = 10'000, waitingCount = 5'000;
constexpr std::size_t drainedCount = SignedInAccount::recordCount;

const std::string nextRunnable =
    "SELECT txn.* FROM TRANSACTIONS_NEW txn LEFT JOIN TRANSACTIONS_DEPENDENCY txn_dep ON txn.txn_id = txn_dep.txn_id "
    "WHERE txn_dep.txn_id is NULL AND (txn.error_response IS NULL OR error_response = '') AND txn.txn_type IN (1, 9) "
    "AND txn.status = 1 ORDER BY txn.txn_id LIMIT 1";

NTransaction editOf(std::int64_t id, const std::string& recordId) {
    auto text = std::to_string(id);
    return {.id = id,
            .recordId = recordId,
            .module = ModuleIdentifier::Case::leads,
            .kind = Kind::editRecord,
            .payload = {{"Company", "queued " + text}, {"City", "Bonn"}, {"Phone", "+49 228 " + text}}};
}

/// The argument is the number of transactions that wait before the first one that can go.
void nextRunnableTransaction(benchmark::State& state) {
    Folder folder;
    OpenDatabase database(folder.path + "/queue.db");
    auto stores = Stores::current();
    auto first = state.range(0);
    std::vector<NTransaction> transactions;
    std::vector<TransactionDependency> dependencies;
    for (std::int64_t id = 1; id <= queuedCount; ++id) transactions.push_back(editOf(id, std::to_string(id)));
    for (std::int64_t i = 1; i <= waitingCount; ++i) {
        auto waiting = i <= first ? i : queuedCount - waitingCount + i;
        dependencies.push_back({waiting, first + 1, TransactionDependency::Kind::sameRecord});
    }
    auto queue = stores.currentTransactions();
    bool isStored = database.adapter->transaction("fill the queue", [&] {
        if (!queue->prepare() || !queue->storeTransactions(transactions, dependencies)) return false;
        for (auto& each : transactions)
            if (!stores.changeRegister()->enter(ChangeQueue::current, std::to_string(each.id))) return false;
        return true;
    });
    HandWritten file(folder.path + "/queue.db", "a passphrase");
    Prepared hand(file.handle(), nextRunnable);
    Comparison comparison(state);
    for (auto _ : state) {
        std::int64_t found = 0;
        comparison.round(
            [&] {
                auto next = queue->getNextRunnableTransaction({Kind::editRecord, Kind::addTextNote});
                if (next && next.value()) found = next.value()->id;
            },
            [&] { hand.run(); });
        if (!isStored || found != first + 1 || hand.read().empty()) return state.SkipWithError("nothing was found");
    }
    comparison.finish(0);
}

/// Sends the edits of the queue in a copy of the file by hand.
class HandDrain {
public:
    explicit HandDrain(const std::string& path) : file_(path, "a passphrase") {}

    /// Returns how many were accepted.
    std::size_t send(const std::vector<std::string>& ids) {
        std::size_t accepted = 0;
        for (std::size_t i = 0; i < drainedCount; ++i) {
            next_.run();
            auto id = std::to_string(i + 1);
            begin_.run();
            start_.run({id});
            noteSend_.run({id});
            commit_.run();
            if (!isAccepted(i, ids[i])) continue;
            ++accepted;
            begin_.run();
            removeDependencies_.run({id, id});
            remove_.run({id});
            removeEntry_.run({id});
            update_.run({"by hand " + id, "Bonn", "+49 228 " + id, ids[i]});
            commit_.run();
        }
        return accepted;
    }

private:
    bool isAccepted(std::size_t number, const std::string& recordId) {
        std::promise<bool> answered;
        auto text = std::to_string(number);
        service_->addRecord(
            {.jsonData =
                 platform::Data(R"({"data":[{"Company":"bare )" + text + R"(","City":"Bonn","Phone":"+49 228 )" + text +
                                R"(","id":")" + recordId + R"("}]})"),
             .params = {{"module", "Leads"}, {"moduleAPI", "Leads"}},
             .operation = AddRecordNetworkServiceOperation::edit,
             .recordID = recordId,
             .key = platform::Random::uuid()},
            [&](const ChangeAnswer& answer) { answered.set_value(answer.outcome == ChangeAnswer::Outcome::accepted); });
        return answered.get_future().get();
    }
    Prepared prepared(const std::string& sql) const { return {file_.handle(), sql}; }

    HandWritten file_;
    const std::shared_ptr<AddEditRecordNetworkService> service_ = std::make_shared<AddEditRecordNetworkService>();
    Prepared next_ = prepared(nextRunnable);
    Prepared begin_ = prepared("BEGIN IMMEDIATE"), commit_ = prepared("COMMIT");
    Prepared start_ = prepared("UPDATE TRANSACTIONS_NEW SET sync_attempt = 1, status = 3 WHERE txn_id = ?");
    Prepared noteSend_ =
        prepared("UPDATE TARVO_CHANGES SET sends = sends + 1 WHERE queue = 'current' AND transaction_id = ?");
    Prepared removeDependencies_ =
        prepared("DELETE FROM TRANSACTIONS_DEPENDENCY WHERE txn_id = ? OR dependent_txn = ?");
    Prepared remove_ = prepared("DELETE FROM TRANSACTIONS_NEW WHERE txn_id = ?");
    Prepared removeEntry_ = prepared("DELETE FROM TARVO_CHANGES WHERE queue = 'current' AND transaction_id = ?");
    Prepared update_ = prepared("UPDATE LeadsRecords SET COMPANY = ?, CITY = ?, PHONE = ? WHERE ID = ?");
};

void drainTransactions(benchmark::State& state) {
    SignedInAccount account;
    if (!account.isReady()) return state.SkipWithError("the download failed");
    auto path = account.adapter()->databaseName();
    Comparison comparison(state);
    for (auto _ : state) {
        ChangeQueues::shared().stop();
        std::vector<NTransaction> transactions;
        for (std::size_t i = 0; i < drainedCount; ++i)
            transactions.push_back(editOf(static_cast<std::int64_t>(i + 1), account.ids[i]));
        if (!ChangeQueues::shared().transactionManager()->addTransactions(transactions, {}))
            return state.SkipWithError("nothing was queued");
        // A file that is closed has all changes in it.
        account.close();
        auto copy = path + "-by-hand";
        std::filesystem::copy_file(path, copy, std::filesystem::copy_options::overwrite_existing);
        account.open();
        HandDrain hand(copy);
        std::size_t accepted = 0;
        comparison.round([] { SignedInAccount::drain(); }, [&] { accepted = hand.send(account.ids); });
        auto left = Stores::current().currentTransactions()->getTransactions();
        if (accepted != drainedCount || !left || !left->transactions.empty())
            return state.SkipWithError("a request was refused or got no answer");
    }
    comparison.finish(static_cast<std::int64_t>(drainedCount));
    ChangeQueues::shared().stop();
}

BENCHMARK(nextRunnableTransaction)->Arg(0)->Arg(waitingCount)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(drainTransactions)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tarvo::benchmarks
