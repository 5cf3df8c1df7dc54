#include <atomic>
#include <future>

#include "benchmarks/record_changes/SignedInAccount.h"
#include "platform/Random.h"
#include "tarvobase/record_changes/internal/ChangeDrain.h"
#include "tarvobase/record_changes/wire/AddEditRecordNetworkService.h"

// Measures how long the queue takes to send a thousand edits, from its start to rest, to a server in a process of its
// own. The floor sends as many requests with the same service, as many at a time, and drops the answers.
namespace tarvo::benchmarks {

namespace {

constexpr std::size_t editCount = SignedInAccount::recordCount;

class BareRequests {
public:
    explicit BareRequests(const std::vector<std::string>& ids) : ids_(ids) {}

    /// Returns how many were accepted.
    std::size_t send() {
        next_ = ended_ = accepted_ = 0;
        done_ = {};
        auto done = done_.get_future();
        for (std::size_t i = 0; i < ChangeDrain::mostRequests; ++i) sendNext();
        done.wait();
        return accepted_;
    }

private:
    void sendNext() {
        auto number = next_++;
        if (number >= editCount) return;
        auto text = std::to_string(number);
        AddEditRecordRequest request{
            .jsonData = platform::Data(R"({"data":[{"id":")" + ids_[number] + R"(","Company":"bare )" + text +
                                       R"(","City":"Bonn","Phone":"+49 228 )" + text + R"("}]})"),
            .params = {{"module", "Leads"}, {"moduleAPI", "Leads"}},
            .operation = AddRecordNetworkServiceOperation::edit,
            .recordID = ids_[number],
            .key = platform::Random::uuid()};
        service_->addRecord(std::move(request), [this](const ChangeAnswer& answer) {
            if (answer.outcome == ChangeAnswer::Outcome::accepted) ++accepted_;
            sendNext();
            if (++ended_ == editCount) done_.set_value();
        });
    }

    const std::vector<std::string>& ids_;
    const std::shared_ptr<AddEditRecordNetworkService> service_ = std::make_shared<AddEditRecordNetworkService>();
    std::atomic<std::size_t> next_ = 0, ended_ = 0, accepted_ = 0;
    std::promise<void> done_;
};

void drainEdits(benchmark::State& state) {
    SignedInAccount account;
    if (!account.isReady()) return state.SkipWithError("the download failed");
    BareRequests bare(account.ids);
    Comparison comparison(state);
    for (auto _ : state) {
        ChangeQueues::shared().stop();
        for (std::size_t i = 0; i < editCount; ++i) account.edit(i, "queued " + std::to_string(i));
        std::size_t accepted = 0;
        comparison.round([] { SignedInAccount::drain(); }, [&] { accepted = bare.send(); });
        auto left = Stores::current().transactions()->getTransactions();
        if (accepted != editCount || !left || !left->transactions.empty())
            return state.SkipWithError("a request was refused or got no answer");
    }
    comparison.finish(editCount);
    ChangeQueues::shared().stop();
}

BENCHMARK(drainEdits)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tarvo::benchmarks
