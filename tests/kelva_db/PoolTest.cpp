#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <barrier>
#include <latch>
#include <thread>

#include "tests/kelva_db/DatabaseFixture.h"
#include "tests/support/OnThreads.h"

namespace kelva::tests {

namespace {

class PoolTest : public testing::Test {
protected:
    void SetUp() override {
        database_.emplace(folder_.file("a.db"), rawConfiguration());
        execute(*database_, "CREATE TABLE t (x INTEGER, y INTEGER)");
    }
    Folder folder_;
    std::optional<DatabasePool> database_;
};

TEST_F(PoolTest, ReadersSeeEveryCommitAndWholeTransactionsOnly) {
    constexpr int writes = 200, readers = 6;
    std::atomic<int> committed = 0;
    std::atomic<bool> wrong = false;
    // The first thread writes, the others read.
    tarvo::onThreads(1 + readers, [&](int number) {
        for (int i = 0; number == 0 && i < writes; ++i, ++committed)
            execute(*database_, "INSERT INTO t (x) VALUES (1); INSERT INTO t (x) VALUES (2)");
        while (committed < writes) {
            auto before = committed.load();
            database_->read([&](Database& reader) {
                auto x = reader.query("SELECT count(*) FROM t WHERE x = 1");
                auto y = reader.query("SELECT count(*) FROM t WHERE x = 2");
                auto seen = *x.cell(0, 0).asInteger();
                if (seen < before || seen != *y.cell(0, 0).asInteger()) wrong = true;
            });
        }
    });
    EXPECT_FALSE(wrong);
}

TEST_F(PoolTest, FourReadsRunBesideAWrite) {
    std::barrier meeting(5);
    tarvo::onThreads(5, [&](int number) {
        if (number > 0)
            return database_->read([&](Database& reader) {
                reader.query("SELECT * FROM t");
                meeting.arrive_and_wait();
                meeting.arrive_and_wait();
                EXPECT_EQ(reader.query("SELECT * FROM t").size(), 0u) << "a block reads one state";
            });
        meeting.arrive_and_wait();
        execute(*database_, "INSERT INTO t (x) VALUES (1)");
        meeting.arrive_and_wait();
    });
    EXPECT_EQ(integer(*database_, "SELECT count(*) FROM t"), 1);
}

/// Adds the number of rows as a row.
void addCount(KelvaDatabase& database) {
    database.write([](Database& writer) {
        auto count = writer.query("SELECT count(*) FROM t").cell(0, 0).asInteger();
        writer.insert("t", ValueMap{{"x", *count}});
    });
}

TEST_F(PoolTest, WritesOfManyThreadsComeOneAfterTheOther) {
    tarvo::onThreads(4, [&](int) {
        for (int j = 0; j < 50; ++j) addCount(*database_);
    });
    EXPECT_EQ(integer(*database_, "SELECT count(DISTINCT x) FROM t"), 200);
}

TEST_F(PoolTest, WritesOnAConcurrentQueueComeOneAfterTheOther) {
    auto queue = tarvo::DispatchQueue::concurrent("test.concurrent");
    DatabasePool database(folder_.file("b.db"), rawConfiguration(), queue);
    execute(database, "CREATE TABLE t (x)");
    constexpr int items = 8, writes = 10;
    std::latch done(items);
    auto addAll = [&] {
        for (int i = 0; i < writes; ++i) EXPECT_NO_THROW(addCount(database));
        done.count_down();
    };
    // Half of them are items of the queue, which hold it already.
    for (int i = 0; i < items / 2; ++i) {
        queue->async(addAll);
        tarvo::DispatchQueue::concurrent("test.elsewhere")->async(addAll);
    }
    done.wait();
    EXPECT_EQ(integer(database, "SELECT count(DISTINCT x) FROM t"), items * writes);
}

TEST_F(PoolTest, TwoFirstOpeningsAtOnceShareOneFile) {
    for (int round = 0; round < 10; ++round) {
        auto path = folder_.file("fresh" + std::to_string(round));
        std::barrier together(2);
        tarvo::onThreads(2, [&](int) {
            together.arrive_and_wait();
            EXPECT_NO_THROW({
                DatabasePool database(path, passphraseConfiguration("a passphrase"));
                execute(database, "CREATE TABLE IF NOT EXISTS t (x); INSERT INTO t VALUES (1)");
            });
        });
        DatabasePool database(path, passphraseConfiguration("a passphrase"));
        EXPECT_EQ(integer(database, "SELECT count(*) FROM t"), 2);
    }
}

TEST_F(PoolTest, TheMemoryDatabaseIsAttachedByItsName) {
    const std::string name = "file::memory:?cache=shared";
    DatabaseQueue memory(name, Configuration());
    execute(memory, "CREATE TABLE m (x); INSERT INTO m VALUES (1)");
    database_->attachDatabase(name, "memory");
    execute(*database_, "INSERT INTO memory.m SELECT x + 1 FROM memory.m");
    EXPECT_EQ(integer(*database_, "SELECT sum(x) FROM memory.m"), 3);
    database_->detachDatabase("memory");
    EXPECT_EQ(integer(memory, "SELECT sum(x) FROM m"), 3);
    EXPECT_FALSE(tarvo::files::exists(name)) << "no file of that name";
}

TEST_F(PoolTest, ClosingWaitsForReadsUnderWay) {
    std::latch reading(1), go(1);
    std::atomic<bool> finished = false;
    std::thread reader([&] {
        database_->read([&](Database& database) {
            reading.count_down();
            go.wait();
            database.query("SELECT * FROM t");
            finished = true;
        });
    });
    reading.wait();
    std::thread closer([&] {
        database_->close();
        EXPECT_TRUE(finished);
    });
    go.count_down();
    closer.join();
    reader.join();
    EXPECT_FALSE(tarvo::files::exists(folder_.file("a.db-wal"))) << "closing leaves the file alone, without a log";
}

TEST_F(PoolTest, LogStaysBoundedAndTheFileWholeAcrossReopening) {
    std::string big(200'000, 'x');
    for (int i = 0; i < 100; ++i)
        database_->write(
            [&](Database& writer) { writer.execute("INSERT INTO t (y) VALUES (?)", std::vector<Value>{big}); });
    EXPECT_LT(*tarvo::files::size(folder_.file("a.db-wal")), 12u << 20);
    database_.reset();
    database_.emplace(folder_.file("a.db"), rawConfiguration());
    EXPECT_EQ(integer(*database_, "SELECT count(*) FROM t WHERE length(y) = 200000"), 100);
}

// The sanitizers need descriptors of their own to check an access.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define TARVO_IS_SANITIZED
#endif
#endif
#ifndef TARVO_IS_SANITIZED
TEST_F(PoolTest, ReadersThatCannotOpenWaitForTheOthers) {
    integer(*database_, "SELECT 1");
    auto free = ::open("/dev/null", O_RDONLY);
    ::close(free);
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    auto tight = before;
    tight.rlim_cur = static_cast<rlim_t>(free) + 1;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &tight), 0);
    std::latch meeting(3);
    tarvo::onThreads(3, [&](int) {
        meeting.arrive_and_wait();
        for (int j = 0; j < 20; ++j) EXPECT_NO_THROW(EXPECT_EQ(integer(*database_, "SELECT count(*) FROM t"), 0));
    });
    ::setrlimit(RLIMIT_NOFILE, &before);
}
#endif

TEST_F(PoolTest, HoldingTheQueueIsNoObstacle) {
    auto queue = tarvo::DispatchQueue::serial("test.db");
    DatabasePool database(folder_.file("b.db"), rawConfiguration(), queue);
    queue->sync([&] { database.write([](Database& writer) { writer.execute("CREATE TABLE t (x)"); }); });
    queue->sync([&] { EXPECT_EQ(integer(database, "SELECT count(*) FROM t"), 0); });
    database.write([&](Database&) { EXPECT_TRUE(queue->isCurrent()); });
}

}  // namespace

}  // namespace kelva::tests
