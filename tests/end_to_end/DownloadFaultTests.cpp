#include <poll.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "tests/end_to_end/EndToEnd.h"
#include "tests/end_to_end/TableContents.h"

namespace tarvo::tests {

namespace {

constexpr const char* faultPassphrase = "right passphrase";

/// First downloads that meet a fault of the disk at a certain commit, and the run after it.
///
/// A run of the whole suite samples the commits. With TARVO_FULL_SWEEP in the environment every commit is tried, and a
/// foreign lock lasts as long as a stuck process would hold it.
class DownloadFault : public ::testing::Test {
protected:
    void SetUp() override {
        auto undisturbed = endOf(start("", 0));
        ASSERT_EQ(undisturbed.status, 0) << undisturbed.errors;
        expected = tables();
        ASSERT_GT(expected.size(), 60u);
        std::ifstream(countFile()) >> commits >> transactions;
        ASSERT_GT(commits, 30);
        ASSERT_GT(transactions, 30);
    }

    /// Starts a first download on a fresh home.
    std::unique_ptr<Process> start(const std::string& fault, int at) {
        files::remove(world.home());
        return run({"--json", "init"}, faultAt(fault, at));
    }
    std::vector<std::string> faultAt(const std::string& fault, int at) const {
        return {"LD_PRELOAD=" + std::string(std::getenv("TARVO_BIN_DIR")) + "/libdisk_faults.so",
                // The library need not come before the sanitizer's own.
                "ASAN_OPTIONS=verify_asan_link_order=0", "TARVO_FAULT=" + fault, "TARVO_FAULT_AT=" + std::to_string(at),
                "TARVO_FAULT_UNDER=" + world.home(), "TARVO_FAULT_COUNT=" + countFile(),
                isFullSweep() ? "" : "TARVO_FAULT_HURRY=50"};
    }
    /// Expects the next download to complete, and to leave what an undisturbed one leaves.
    void expectRepair() {
        auto next = endOf(run({"--json", "init"}));
        ASSERT_EQ(next.status, 0) << next.errors;
        expectSameTables(expected, tables());
    }
    static void expectReport(const Ended& ended) {
        EXPECT_EQ(ended.status, 1) << ended.output;
        EXPECT_TRUE(isOneLine(ended.errors)) << ended.errors;
    }
    EncryptedFile::Tables tables() const { return EncryptedFile(world.databasePath(), faultPassphrase).tables(); }

    static bool isFullSweep() { return std::getenv("TARVO_FULL_SWEEP"); }
    /// Returns points from `first` to `last`: `count` of them, or all in a full sweep that tries every one.
    static std::vector<int> points(int first, int last, int count) {
        std::vector<int> points;
        for (int i = 0; i < count; ++i) points.push_back(first + (last - first) * i / (count - 1));
        return points;
    }

    std::unique_ptr<Process> run(const std::vector<std::string>& arguments,
                                 std::vector<std::string> environment = {}) const {
        environment.push_back(std::string("TARVO_PASSPHRASE=") + faultPassphrase);
        return std::make_unique<Process>("tarvo-host", world.arguments(arguments), world.folder + "/host.log",
                                         environment);
    }

    EndToEnd world{{"--records", "10"}};
    EncryptedFile::Tables expected;
    int commits = 0, transactions = 0;

private:
    std::string countFile() const { return world.folder + "/counts"; }
};

TEST_F(DownloadFault, AKillAtACommitIsRepairedByTheNextRun) {
    int kills = 0;
    for (auto at : points(1, commits, isFullSweep() ? commits : 20)) {
        SCOPED_TRACE("killed at commit " + std::to_string(at) + " of " + std::to_string(commits));
        auto killed = endOf(start("kill", at));
        kills += !killed.status;
        expectRepair();
    }
    EXPECT_GT(kills, 15);
}

TEST_F(DownloadFault, ARemovedDatabaseIsDownloadedAgain) {
    files::remove(world.home() + "/Databases");
    expectRepair();
}

TEST_F(DownloadFault, AFullDiskIsReportedAndRepairedByTheNextRun) {
    for (auto at : points(1, commits - 2, isFullSweep() ? 10 : 3)) {
        SCOPED_TRACE("full after commit " + std::to_string(at) + " of " + std::to_string(commits));
        expectReport(endOf(start("full", at)));
        expectRepair();
    }
}

TEST_F(DownloadFault, AFetchIntoAFullDiskIsReported) {
    for (auto& command : std::vector<std::vector<std::string>>{{"fields", "Leads"}, {"views", "Leads"}, {"modules"}}) {
        SCOPED_TRACE(command.front());
        auto arguments = command;
        arguments.insert(arguments.end(), {"--json", "--fetch"});
        expectReport(endOf(run(arguments, faultAt("full", 0))));
    }
    expectRepair();
}

TEST_F(DownloadFault, AForeignLockIsReportedAndRepairedByTheNextRun) {
    for (auto at : points(transactions / 10, transactions - 2, isFullSweep() ? 10 : 3)) {
        SCOPED_TRACE("locked at transaction " + std::to_string(at) + " of " + std::to_string(transactions));
        auto host = start("stop", at);
        ASSERT_TRUE(host->waitUntilStopped());
        {
            EncryptedFile foreign(world.databasePath(), faultPassphrase);
            ASSERT_TRUE(foreign.execute("BEGIN IMMEDIATE"));
            host->resume();
            ::poll(nullptr, 0, isFullSweep() ? 30'000 : 1'000);
        }
        expectReport(endOf(std::move(host)));
        expectRepair();
    }
}

}  // namespace

}  // namespace tarvo::tests
