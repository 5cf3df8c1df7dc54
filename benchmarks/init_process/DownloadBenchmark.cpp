#include "benchmarks/init_process/Application.h"
#include "benchmarks/init_process/DownloadedTables.h"
#include "benchmarks/init_process/WatchedDownload.h"
#include "platform/Text.h"
#include "tarvobase/records/wire/WireRecords.h"
#include "tarvobase/utils/Util.h"

// Measures the first download of an account: all steps, over TLS, from a server in a process of its own into an
// encrypted file. The floor inserts the resulting rows of the record tables with hand-written code into a file of the
// same settings.
//
// During the download, the server and the transport share the processors with it, and its own counters show what a user
// waits for. For the ratio, the answers are parsed and stored once more into new files, alone and on one thread, in
// turns with the floor.
namespace tarvo::benchmarks {

namespace {

constexpr std::size_t recordsOfModule = 5'000;
constexpr int rounds = 5;
const std::string key(32, 'k'), salt(16, 's');

/// Stores the answers and the floor's rows in turns. The best round of each side counts, since a round takes a second,
/// which is long enough for other programs to disturb it.
struct Alone {
    struct Ours {
        double parse = 0, store = 0;
        double all() const { return parse + store; }
    };
    Ours ours;
    double hand = 0;

    Alone(const std::vector<platform::Data>& bodies, const DownloadedTables& tables) {
        for (int round = 0; round < rounds; ++round) {
            bool oursFirst = round % 2 == 0;
            auto handSeconds = oursFirst ? 0 : insertByHand(tables);
            auto seconds = storeAnswers(bodies, tables);
            if (oursFirst) handSeconds = insertByHand(tables);
            if (round == 0 || seconds.all() < ours.all()) ours = seconds;
            if (round == 0 || handSeconds < hand) hand = handSeconds;
        }
    }

private:
    static Ours storeAnswers(const std::vector<platform::Data>& bodies, const DownloadedTables& tables) {
        Folder folder;
        OpenDatabase database(folder.path + "/ours.db");
        tables.prepare(*database.adapter);
        auto records = RecordInDatabase::make(database.adapter);
        Ours seconds;
        for (auto& body : bodies) {
            Stopwatch watch;
            auto answer = WireRecordsParser::parse(body);
            seconds.parse += watch.seconds();
            if (!answer) std::abort();
            for (auto& entry : answer->result)
                if (entry && entry->data)
                    seconds.store += secondsOf([&] { records->storePage(*entry->data, *entry->info.moduleName); });
        }
        return seconds;
    }
    static double insertByHand(const DownloadedTables& tables) {
        Folder folder;
        kelva::benchmarks::HandWritten hand(folder.path + "/hand.db", "x'" + text::hex(key) + text::hex(salt) + "'");
        tables.prepare(hand);
        return secondsOf([&] { tables.insert(hand); });
    }
};

std::vector<std::string> moduleNames(const std::shared_ptr<DatabaseAdapter>& database) {
    std::vector<std::string> names;
    auto stored = Stores::over(database).modules()->getAllModules();
    if (stored)
        for (auto& module : *stored) names.push_back(module.moduleName);
    return names;
}

void firstDownload(benchmark::State& state) {
    Folder folder;
    SandboxProcess server(folder.path + "/server", recordsOfModule);
    if (!server.listens()) return state.SkipWithError("tarvo-sandbox does not start: build it beside this program");
    Application application(folder.path, server);
    for (auto _ : state) {
        OpenDatabase database(DatabaseConstants().databaseName());
        Util::performInitialOperations(std::make_shared<BrenUserDefaults>());
        auto split = std::make_shared<Split>();
        bool isDone = false;
        auto seconds = secondsOf([&] { isDone = download(database.adapter, split); });
        state.SetIterationTime(seconds);
        if (!isDone) return state.SkipWithError("the download failed");

        DownloadedTables tables(*database.adapter, moduleNames(database.adapter));
        Alone alone(split->bodies, tables);
        std::size_t bytes = 0;
        for (auto& body : split->bodies) bytes += body.size();
        auto set = [&](const char* name, auto value) { state.counters[name] = static_cast<double>(value); };
        set("modules", split->modules);
        set("records", split->records);
        set("rows", tables.rowCount());
        set("MB", static_cast<double>(bytes) / 1e6);
        set("s_network", split->network());
        set("s_parse", split->parse);
        set("s_store", split->store);
        set("s_other", seconds - split->network() - split->parse - split->store);
        set("records/s", static_cast<double>(split->records) / seconds);
        set("alone_s_parse", alone.ours.parse);
        set("alone_s_store", alone.ours.store);
        set("hand_s", alone.hand);
        set("of_hand_live", alone.hand / (split->parse + split->store));
        set("of_hand", alone.hand / alone.ours.all());
    }
}

BENCHMARK(firstDownload)->UseManualTime()->Unit(benchmark::kSecond)->Iterations(1);

}  // namespace

}  // namespace tarvo::benchmarks
