#include "host/commands/SyncCommands.h"

#include <algorithm>

#include "bridge/forms/JsonForm.h"
#include "host/commands/CommandSteps.h"
#include "host/commands/Console.h"
#include "host/commands/Progress.h"
#include "platform/Json.h"
#include "tarvobase/change_queues/ChangeQueues.h"
#include "tarvobase/download/DownloadRecordsUseCase.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/sync/RecordsSyncUseCases.h"

namespace tarvo::host {

namespace {

/// How long the changes that wait may take before a sync begins without them.
constexpr std::chrono::seconds drainPatience{30};
constexpr const char* tokenNeededForSync = "no modules are stored, and there is no token to fetch them";

/// Runs the main queue until `hasEnded`, as long as something is reported from time to time.
template <class Listener>
bool waitWhileReporting(const Listener& listener) {
    while (!listener.hasEnded) {
        auto seen = listener.reports;
        bool isAlive =
            MainQueue::shared()->runUntil([&] { return listener.hasEnded || listener.reports != seen; }, patience);
        if (!isAlive) return false;
    }
    return true;
}

std::string whyRoundBroke(const SyncRound& round) {
    using R = SyncRound::Reason;
    if (round.outcome == SyncRound::Outcome::running) return "is under way";
    if (!round.reason) return "";
    switch (*round.reason) {
        case R::noNetwork:
            return "the server could not be reached";
        case R::notSignedIn:
            return "there is no token";
        case R::outdated:
            return "another account came into force";
        case R::refused:
            return "the server refused";
        case R::unusableAnswer:
            return "the answer cannot be read";
        case R::noResponseTime:
            return "the answer has no time";
        case R::noMetadata:
            return "the module has no fields here";
        case R::notStored:
            return "the database could not store it";
        case R::noProgress:
            return "the server's pages do not advance";
        case R::stopped:
            return "was stopped";
        case R::interrupted:
            return "the program ended";
    }
    return "";
}

std::string tableOfRounds(std::vector<SyncRound> rounds) {
    std::sort(rounds.begin(), rounds.end(), [](auto& a, auto& b) { return a.moduleName < b.moduleName; });
    std::vector<std::vector<std::string>> rows{{"Module", "Round", "Added", "Edited", "Deleted", "Pages", "Why"}};
    for (auto& round : rounds)
        rows.push_back({round.moduleName, std::string(caseName(round.outcome)), grouped(round.added),
                        grouped(round.edited), grouped(round.deleted), grouped(round.pages), whyRoundBroke(round)});
    return tableText(rows);
}

/// Among all modules there are some that never sync: those without fields, such as dashboards, and those whose records
/// come as rows of others. A module that has synced before is not one of them.
bool neverSyncs(const SyncRound& round) {
    bool isRefused = round.reason == SyncRound::Reason::noMetadata || round.reason == SyncRound::Reason::refused;
    return isRefused && !round.finishedAt;
}

/// Returns whether a round broke off that should have finished. If no module syncs at all, something is wrong with the
/// server or the account.
bool hasBroken(const std::vector<SyncRound>& rounds, const Arguments& arguments) {
    auto isFinished = [](auto& round) { return round.outcome == SyncRound::Outcome::finished; };
    if (std::none_of(rounds.begin(), rounds.end(), isFinished)) return true;
    return std::any_of(rounds.begin(), rounds.end(), [&](auto& round) {
        return !isFinished(round) && !(arguments.modules.empty() && neverSyncs(round));
    });
}

int printRounds(const Arguments& arguments, const std::vector<SyncRound>& rounds) {
    if (!arguments.json) return printForPeople(tableOfRounds(rounds));
    return printForPrograms(json::write(ValueMap{{"rounds", bridge::toJson(rounds)}}).value_or("") + "\n");
}

/// Shows each page of a sync, and collects the rounds.
class SyncProgress final : public RecordsSyncUseCaseDelegate {
public:
    explicit SyncProgress(bool isSilent) : isSilent_(isSilent) {}
    void syncStarted(const std::string&) override { ++reports; }
    void syncProgressed(const SyncRound& round) override {
        ++reports;
        auto received = round.added + round.edited + round.deleted;
        if (!isSilent_ && received > 0) printForPeople(round.moduleName + ": " + grouped(received) + " changes\n");
    }
    bool wantsSyncResults() const override { return false; }
    void syncsEnded(const std::vector<SyncRound>& ended) override {
        rounds.insert(rounds.end(), ended.begin(), ended.end());
        hasEnded = true;
    }
    std::vector<SyncRound> rounds;
    std::size_t reports = 0;
    bool hasEnded = false;

private:
    const bool isSilent_;
};

/// Opens the database and returns the stored modules that the arguments name, or all of them.
Result<std::vector<Module>, int> namedModules(Host& host, const Arguments& arguments) {
    if (!arguments.token) return fail("there is no token", 2);
    auto path = openDatabase(host, arguments);
    if (!path) return path.error();
    auto first = arguments;
    for (auto& name : arguments.modules) {
        first.module = name;
        if (auto status = findModule(host, first, tokenNeededForSync)) return *status;
    }
    auto stores = Stores::current();
    auto all = stores.modules()->getAllModules();
    if (!all) return fail("the modules cannot be read");
    if (arguments.modules.empty()) return std::move(all).value();
    std::vector<Module> modules;
    for (auto& module : all.value())
        if (std::find(arguments.modules.begin(), arguments.modules.end(), module.moduleName) != arguments.modules.end())
            modules.push_back(module);
    return modules;
}

/// Shows the pages of a download.
class DownloadProgress final : public DownloadRecordsUseCaseDelegate {
public:
    struct Downloaded {
        std::string moduleName;
        std::int64_t from = 0, to = 0;
        bool hasMore = false, isComplete = false;
        static constexpr auto fields() {
            using D = Downloaded;
            return describe(field("moduleName", &D::moduleName), field("from", &D::from), field("to", &D::to),
                            field("hasMore", &D::hasMore), field("isComplete", &D::isComplete));
        }
    };
    explicit DownloadProgress(const std::vector<Module>& modules) {
        for (auto& module : modules) downloaded.push_back({.moduleName = module.moduleName});
    }
    void recordsDownloaded(const DownloadedRange& inRange, const std::string& moduleName, bool hasMore) override {
        ++reports;
        for (auto& one : downloaded) {
            if (one.moduleName != moduleName) continue;
            if (one.to == 0) one.from = inRange.from;
            one.to = inRange.to;
            one.hasMore = hasMore;
        }
    }
    void recordsDownloadDidComplete(const std::string& moduleName) override {
        ++reports;
        for (auto& one : downloaded)
            if (one.moduleName == moduleName) one.isComplete = true;
    }
    void recordsDownloadDidCompleteForAll(const std::vector<Module>&) override { hasEnded = true; }
    std::vector<Downloaded> downloaded;
    std::size_t reports = 0;
    bool hasEnded = false;
};

std::string tableOfDownloads(const std::vector<DownloadProgress::Downloaded>& modules) {
    std::vector<std::vector<std::string>> rows{{"Module", "New", "Records", "Server has more", "Download"}};
    for (auto& one : modules)
        rows.push_back({one.moduleName, grouped(one.to - one.from), grouped(one.to), one.hasMore ? "yes" : "no",
                        one.isComplete ? "complete" : "failed"});
    return tableText(rows);
}

}  // namespace

int syncModules(Host& host, const Arguments& arguments) {
    auto modules = namedModules(host, arguments);
    if (!modules) return modules.error();
    if (modules->empty()) return printRounds(arguments, {});
    // A round meets as few queued changes as can be.
    ChangeQueues::shared().start();
    waitForRestingQueues(drainPatience);
    auto progress = std::make_shared<SyncProgress>(arguments.json);
    auto all = AllModulesSyncUseCase::make(Stores::current());
    all->delegate = progress;
    all->syncModules(modules.value());
    if (!waitWhileReporting(*progress)) return fail("the server did not answer in time; the next sync repeats it");
    auto status = printRounds(arguments, progress->rounds);
    return hasBroken(progress->rounds, arguments) ? 1 : status;
}

int showLastRound(Host& host, const Arguments& arguments) {
    auto path = openDatabase(host, arguments);
    if (!path) return path.error();
    if (auto status = findModule(host, arguments, tokenNeededForSync)) return *status;
    auto rounds = RecordsSyncDataManager::rounds(Stores::current());
    std::erase_if(rounds, [&](auto& round) { return round.moduleName != arguments.module; });
    if (rounds.empty() && !arguments.json) return printForPeople(arguments.module + " was never synced.\n");
    return printRounds(arguments, rounds);
}

int downloadModules(Host& host, const Arguments& arguments) {
    auto modules = namedModules(host, arguments);
    if (!modules) return modules.error();
    auto progress = std::make_shared<DownloadProgress>(modules.value());
    auto usecase = DownloadRecordsUseCase::make(Stores::current());
    usecase->delegate = progress;
    usecase->initiateDownload(modules.value(), arguments.maxDownloadCount);
    if (!waitWhileReporting(*progress)) return fail("the server did not answer in time; the next download goes on");
    auto& downloaded = progress->downloaded;
    auto status =
        arguments.json
            ? printForPrograms(json::write(ValueMap{{"modules", bridge::toJson(downloaded)}}).value_or("") + "\n")
            : printForPeople(tableOfDownloads(downloaded));
    return std::all_of(downloaded.begin(), downloaded.end(), [](auto& one) { return one.isComplete; }) ? status : 1;
}

}  // namespace tarvo::host
