#include "host/commands/InitCommand.h"

#include <chrono>
#include <cstdio>
#include <map>
#include <set>

#include "bridge/FirstDownload.h"
#include "bridge/forms/JsonForm.h"
#include "host/commands/CommandSteps.h"
#include "host/commands/Console.h"
#include "host/commands/Progress.h"
#include "platform/Files.h"
#include "platform/Json.h"
#include "platform/MainQueue.h"
#include "platform/Text.h"
#include "tarvobase/configuration/UserAccounts.h"
#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/network_layer/NetworkAccess.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/utils/UserDefaultsUtil.h"

namespace tarvo::host {

namespace {

using bridge::FirstDownload;

std::int64_t storedRecordCount(const std::shared_ptr<DatabaseAdapter>& database) {
    // Modules may share a table.
    std::set<std::string> tables;
    for (auto& module : storedModuleNames(database)) tables.insert(RecordUtil::getTableName(module));
    std::int64_t count = 0;
    for (auto& table : tables)
        if (!database->columnNames(table).empty()) count += database->count(table, std::nullopt).value_or(0);
    return count;
}

std::int64_t bytesOf(const std::string& path) {
    std::uint64_t bytes = 0;
    // The last writes lie beside the file until they are merged.
    for (auto suffix : {"", "-wal"}) bytes += files::size(path + suffix).value_or(0);
    return static_cast<std::int64_t>(bytes);
}

/// How often a step failed, by the reason in words.
using Reasons = std::map<std::string, int>;

/// The outcome of a run.
struct RunOutcome {
    bool isCompleted = false;
    bool isIncomplete = false;  ///< the database did not store all of it
    std::map<Process, Reasons> failures;
    std::set<Process> unstored;  ///< the database did not store what these steps received
};

class PercentageListener final : public InitProcessUseCaseDelegate {
public:
    PercentageListener(std::function<void(double percent)> progressed, std::function<void()> isIncomplete)
        : progressed_(std::move(progressed)), isIncomplete_(std::move(isIncomplete)) {}
    void initProcessCompleted(InitProcessUseCaseProtocol&) override {}
    void initProcessIncomplete(InitProcessUseCaseProtocol&) override { isIncomplete_(); }
    void progressDidUpdate(InitProcessUseCaseProtocol&, double value, bool) override { progressed_(value); }

private:
    const std::function<void(double percent)> progressed_;
    const std::function<void()> isIncomplete_;
};

/// One run, which shows its progress.
class ShownRun {
public:
    ShownRun(Host& host, bool json) : database_(host.database()), progress_(Progress::formFor(json)) {}

    /// Returns nullopt if the server was silent for too long.
    std::optional<RunOutcome> run() {
        auto download = FirstDownload::start(
            database_, InitSteps::all,
            {.delegate = std::make_shared<PercentageListener>([this](double percent) { progressed(percent); },
                                                              [this] { outcome_.isIncomplete = true; }),
             .step = [this](auto& report) { stepReported(report); },
             .ended = [this](bool completed) { hasEnded_ = true, outcome_.isCompleted = completed; }});
        while (!hasEnded_) {
            auto seen = reports_;
            if (!MainQueue::shared()->runUntil([&] { return hasEnded_ || reports_ != seen; }, patience)) break;
        }
        progress_.end();
        return hasEnded_ ? std::optional(outcome_) : std::nullopt;
    }

private:
    void progressed(double percent) {
        ++reports_;
        percent_ = percent;
        show();
    }

    void stepReported(const FirstDownload::StepReport& report) {
        ++reports_;
        step_ = report.step;
        if (report.event == FirstDownload::StepEvent::failed) noteFailure(report);
        if (report.event == FirstDownload::StepEvent::notStored) outcome_.unstored.insert(report.step);
        show();
    }

    /// A step that ends as failed has usually reported its reason before.
    void noteFailure(const FirstDownload::StepReport& report) {
        if (!report.why && outcome_.failures.contains(report.step)) return;
        ++outcome_.failures[report.step][report.why ? explanationOf(*report.why, report.cause) : "not done"];
    }

    void show() {
        bool storesRecords = step_ == Process::initialRecords || percent_ >= 100;
        if (storesRecords && static_cast<int>(percent_) != countedAt_) {
            records_ = storedRecordCount(database_);
            countedAt_ = static_cast<int>(percent_);
        }
        progress_.show(percent_, std::string(caseName(step_)), records_);
    }

    const std::shared_ptr<DatabaseAdapter> database_;
    Progress progress_;
    RunOutcome outcome_;
    Process step_ = Process::currentUser;
    double percent_ = 0;
    std::int64_t records_ = 0;
    int countedAt_ = -1;
    std::size_t reports_ = 0;
    bool hasEnded_ = false;
};

/// The summary: what is stored, and what the download took.
struct Summary {
    std::int64_t modules = 0, records = 0, bytes = 0;
    double seconds = 0;
    int requests = 0;
    bool isDownloaded = false;  ///< by this run
    std::vector<std::string> failures;
    std::string database;
    static constexpr auto fields() {
        return describe(field("modules", &Summary::modules), field("records", &Summary::records),
                        field("bytes", &Summary::bytes), field("seconds", &Summary::seconds),
                        field("requests", &Summary::requests), field("downloaded", &Summary::isDownloaded),
                        field("failures", &Summary::failures), field("database", &Summary::database));
    }
};

std::string stepExplanation(Process step, const Reasons& reasonsOfStep) {
    std::vector<std::string> reasons;
    for (auto& [why, times] : reasonsOfStep)
        reasons.push_back(why + (times > 1 ? " (" + std::to_string(times) + " times)" : ""));
    return std::string(caseName(step)) + ": " + text::join(reasons, "; ");
}

std::string stepNames(const std::set<Process>& steps) {
    std::vector<std::string> names;
    for (auto step : steps) names.emplace_back(caseName(step));
    return names.empty() ? "" : " (" + text::join(names, ", ") + ")";
}

std::string decimal(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", number);
    return text;
}

std::string forPeople(const Summary& summary) {
    auto text = summary.isDownloaded ? "\nThe first download is complete.\n\n"
                                     : "The first download was completed before; --fetch runs it again.\n\n";
    std::vector<std::vector<std::string>> rows = {
        {"modules", grouped(summary.modules)},
        {"records", grouped(summary.records)},
        {"on disk", grouped(summary.bytes) + " bytes, encrypted, " + summary.database},
        {"time", decimal(summary.seconds) + " seconds"},
        {"requests", grouped(summary.requests)}};
    for (auto& failure : summary.failures) rows.push_back({"failed", failure});
    return text + tableText(rows);
}

/// Resets the completion of an account that is completed again, so that it is noted once.
void completeAgain(const std::string& account, bool wasComplete, bool isCompleted) {
    if (wasComplete && isCompleted) UserAccountsManager::userAccounts().resetInitialDownload(account);
}

}  // namespace

int initAccount(Host& host, const Arguments& arguments) {
    auto path = openDatabase(host, arguments);
    if (!path) return path.error();
    auto start = std::chrono::steady_clock::now();
    bool wasComplete = UserAccountsManager::userAccounts().isInitialDownloadComplete(*arguments.account);
    Summary summary;
    summary.isDownloaded = !wasComplete || arguments.fetch;
    if (summary.isDownloaded) {
        if (arguments.fetch) UserDefaultsUtil(std::make_shared<BrenUserDefaults>()).requestMissingAgain();
        auto outcome = ShownRun(host, arguments.json).run();
        if (!outcome) return fail("the server did not answer in time; the next init goes on from here");
        completeAgain(*arguments.account, wasComplete, outcome->isCompleted);
        for (auto& [step, reasons] : outcome->failures) summary.failures.push_back(stepExplanation(step, reasons));
        if (outcome->isIncomplete)
            return fail("the first download is not complete, since the database did not store all of it" +
                        stepNames(outcome->unstored) + "; the next init goes on from here");
        if (!outcome->isCompleted)
            return fail("the first download could not begin: " + text::join(summary.failures, "; "));
    }
    summary.database = *path;
    summary.modules = static_cast<std::int64_t>(storedModuleNames(host.database()).size());
    summary.records = storedRecordCount(host.database());
    summary.bytes = bytesOf(*path);
    summary.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    summary.requests = requestCount();
    return arguments.json ? printForPrograms(json::write(bridge::toJson(summary)).value_or("") + "\n")
                          : printForPeople(forPeople(summary));
}

}  // namespace tarvo::host
