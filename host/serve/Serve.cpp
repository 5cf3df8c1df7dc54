#include "host/serve/Serve.h"

#include <unistd.h>
#include <atomic>
#include <chrono>
#include <cstdio>

#include "bridge/Session.h"
#include "bridge/calls/Calls.h"
#include "host/commands/Console.h"
#include "host/serve/HostCalls.h"
#include "host/serve/LineReader.h"
#include "platform/MainQueue.h"

namespace tarvo::host {

namespace {

// How long calls under way may take after the input has ended. A request of the library ends sooner.
constexpr std::chrono::seconds endPatience{75};

/// Standard output. After a line could not be written nobody reads the answers, so the session ends.
struct Output {
    std::atomic<bool> isBroken = false;

    void write(std::string_view line) {
        if (isBroken || writeLine(harmlessJson(line))) return;
        isBroken = true;
        MainQueue::shared()->stop();
    }

private:
    static bool writeLine(std::string_view line) {
        return std::fwrite(line.data(), 1, line.size(), stdout) == line.size() && std::fputc('\n', stdout) != EOF &&
               std::fflush(stdout) == 0;
    }
};

}  // namespace

int serve(Host& host) {
    bridge::Registry registry;
    bridge::addCalls(registry);
    // Kept until the session ends: a database may be closed and opened again.
    addHostCalls(registry, host, host.takePassphrase());
    auto output = std::make_shared<Output>();
    auto session = std::make_shared<bridge::Session>(std::move(registry),
                                                     [output](std::string_view line) { output->write(line); });
    session->onInputEnded = [] { MainQueue::shared()->stop(); };

    LineReader reader(
        STDIN_FILENO, [session](std::string line) { session->receive(std::move(line)); },
        [session] { session->inputEnded(); });
    MainQueue::shared()->run();
    bool answered = MainQueue::shared()->runUntil([&] { return session->isIdle() || output->isBroken; }, endPatience);
    session->close();
    if (output->isBroken) return fail("standard output cannot be written");
    return answered ? 0 : fail("calls were still under way at the end of the input");
}

}  // namespace tarvo::host
