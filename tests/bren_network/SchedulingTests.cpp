#include <thread>

#include "bren_network/internal/Tuning.h"
#include "platform/ProgrammingError.h"
#include "tests/bren_network/NetworkFixture.h"
#include "tests/support/OnThreads.h"

namespace bren::test {
namespace {

using SchedulingTest = NetworkTest;

constexpr auto okAndClose = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\nConnection: close\r\n\r\nok";

/// Opens once, for any number of waiting threads.
class Gate {
public:
    void open() { opened_.set_value(); }
    void wait() const { future_.wait(); }

private:
    std::promise<void> opened_;
    std::shared_future<void> future_ = opened_.get_future().share();
};

TEST_F(SchedulingTest, StartsByPriorityThenArrival) {
    // The requests that keep the places taken may be ended by the shutting down.
    expectWarning("shut down");
    Gate slot, rest;
    std::mutex mutex;
    std::vector<std::string> order;
    SecureServer server([&](const Seen& seen) {
        if (seen.target == "/rest") return rest.wait(), Reply{200, "", {}};
        if (seen.target == "/slot") return slot.wait(), Reply{200, "", {}};
        std::lock_guard lock(mutex);
        order.push_back(seen.target);
        return Reply{200, "", {}};
    });
    // All places but one stay taken until the end, so the others go one after another through the last.
    std::atomic<int> left = 6;
    Gate done;
    using enum BrenTaskPriority;
    for (std::size_t i = 1; i < tuning::maximumRunningPerHost; ++i) give(server.url("/rest"), {}, high);
    give(server.url("/slot"), {}, high);
    for (auto [path, priority] : {std::pair("/low1", low),
                                  {"/normal1", normal},
                                  {"/low2", low},
                                  {"/high1", high},
                                  {"/high2", high},
                                  {"/normal2", normal}})
        give(
            server.url(path),
            [&](auto...) {
                if (--left == 0) done.open();
            },
            priority);
    slot.open();
    done.wait();
    rest.open();
    EXPECT_EQ(order, (std::vector<std::string>{"/high1", "/high2", "/normal1", "/normal2", "/low1", "/low2"}));
}

TEST_F(SchedulingTest, SendsNothingThatIsNoLongerWantedWhenItsTurnComes) {
    expectWarning("the account at work has changed");
    expectWarning("shut down");
    Gate gate;
    std::atomic<int> seenOthers = 0;
    SecureServer server([&](const Seen& seen) {
        if (seen.target == "/slot") return gate.wait(), Reply{200, "", {}};
        ++seenOthers;
        return Reply{200, "", {}};
    });
    std::atomic<bool> isWanted = true;
    std::atomic<int> left = 2;
    std::vector<std::string> kinds;
    Gate done;
    for (std::size_t i = 0; i < tuning::maximumRunningPerHost; ++i) manager.send(taskFor(server.url("/slot")));
    for (int i = 0; i < 2; ++i) {
        auto task = taskFor(server.url("/waiting"));
        task.request.isStillWanted = [&] { return isWanted.load(); };
        task.completion = [&](auto, auto, std::optional<NetworkError> error, int) {
            kinds.emplace_back(error ? kindName(error->kind) : "none");
            if (--left == 0) done.open();
        };
        manager.send(std::move(task));
    }
    isWanted = false;
    gate.open();
    done.wait();
    EXPECT_EQ(kinds, std::vector<std::string>(2, std::string(kindName(NetworkError::Kind::outdated))));
    EXPECT_EQ(seenOthers, 0);
}

TEST_F(SchedulingTest, AnswersEachOfManyRequestsOnceAndOneAtATime) {
    std::atomic<std::size_t> atOnce = 0, most = 0;
    SecureServer server([&](const Seen& seen) {
        auto now = ++atOnce;
        for (auto seenMost = most.load(); seenMost < now && !most.compare_exchange_weak(seenMost, now);) {
        }
        --atOnce;
        return Reply{200, seen.target, {}};
    });
    constexpr int threads = 4, each = 50;
    std::map<std::string, int> completions;  // touched by the network queue alone
    int inside = 0;
    Gate done;
    auto completion = [&](Data data, auto, auto error, int) {
        EXPECT_TRUE(manager.queue()->isCurrent());
        EXPECT_EQ(++inside, 1);
        EXPECT_FALSE(error);
        ++completions[data.text()];
        --inside;
        if (completions.size() == threads * each) done.open();
    };
    tarvo::onThreads(threads, [&](int t) {
        for (int i = 0; i < each; ++i) give(server.url("/" + std::to_string(t) + "/" + std::to_string(i)), completion);
    });
    done.wait();
    for (auto& [path, count] : completions) EXPECT_EQ(count, 1) << path;
    EXPECT_LE(most, tuning::maximumRunningPerHost);
    EXPECT_LE(server.connections(), int(tuning::maximumRunningPerHost));
}

TEST_F(SchedulingTest, AnswersEveryRequestWhenShutDown) {
    expectWarning("shut down");
    RawServer server([](int socket) { RawServer::waitForClose(socket); });
    auto held = std::make_shared<int>();
    int answered = 0;
    for (int i = 0; i < 20; ++i)
        give(server.url("/"), [&, held](Data, auto, auto error, int) {
            EXPECT_EQ(error->kind, NetworkError::Kind::shutDown);
            ++answered;
        });
    manager.shutDown();
    manager.shutDown();
    manager.queue()->sync([] {});
    EXPECT_EQ(answered, 20);
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_EQ(kindOf(ask(taskFor(server.url("/")))), "shut down");

    RawServer answering(RawServer::answering(okAndClose));
    manager.restart();
    EXPECT_EQ(kindOf(ask(taskFor(answering.url("/")))), "none");
}

TEST_F(SchedulingTest, ShutsDownFromACompletion) {
    expectWarning("shut down");
    RawServer silent([](int socket) { RawServer::waitForClose(socket); });
    RawServer server(RawServer::answering(okAndClose));
    std::promise<NetworkError::Kind> ended;
    give(silent.url("/"), [&](Data, auto, auto error, int) { ended.set_value(error->kind); });
    give(server.url("/"), [&](auto...) { manager.shutDown(); });
    EXPECT_EQ(ended.get_future().get(), NetworkError::Kind::shutDown);
}

TEST_F(SchedulingTest, TakesRequestsFromACompletionAndSurvivesItsException) {
    std::atomic<int> reports = 0;
    auto former = tarvo::platform::setProgrammingErrorHandler([&](auto) { ++reports; });
    RawServer server(RawServer::answering(okAndClose));
    std::promise<std::string> second;
    give(server.url("/"), [&](auto...) {
        give(server.url("/"), [&](Data data, auto...) { second.set_value(data.text()); });
        throw std::runtime_error("of a handler");
    });
    EXPECT_EQ(second.get_future().get(), "ok");
    EXPECT_EQ(reports, 1);
    tarvo::platform::setProgrammingErrorHandler(former);
}

TEST_F(SchedulingTest, BeginsNothingWhileBodiesWaitForTheirCompletion) {
    std::atomic<int> requests = 0;
    RawServer server([&](int socket) {
        RawServer::readHeader(socket);
        ++requests;
        RawServer::write(socket, "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + std::string(5000, 'x'));
    });
    manager.setMaximumBufferedKilobytes(1);
    Gate done;
    give(server.url("/"), [&](auto...) {
        give(server.url("/"), [&](auto...) { done.open(); });
        // Twenty round trips give the next request every chance to begin before this body is let go.
        for (int i = 0; i < 20; ++i) RawServer::askDirectly(server.port());
        EXPECT_EQ(requests, 21);
    });
    done.wait();
    EXPECT_EQ(requests, 22);
    manager.setMaximumBufferedKilobytes(tuning::bufferedKilobytes);
}

TEST_F(SchedulingTest, LeavesQuietlyWhenTheProcessEndsWithRequestsUnderWay) {
    RawServer server([](int socket) { RawServer::waitForClose(socket); });
    auto url = server.url("/");
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(
        {
            // The child runs this test from its start, so it has a server of its own.
            for (int i = 0; i < 8; ++i) manager.send(taskFor(url));
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace bren::test
