#include <unistd.h>
#include <csignal>
#include <cstdio>

#include "platform/Files.h"
#include "platform/Json.h"
#include "sandbox/Certificates.h"
#include "sandbox/HttpsServer.h"
#include "sandbox/SandboxArguments.h"

namespace {

using namespace tarvo;
using namespace tarvo::sandbox;

int fail(const std::string& why, int status = 1) {
    std::fprintf(stderr, "tarvo-sandbox: %s\n", why.c_str());
    return status;
}

// Blocks the signals before any thread starts, so that only the wait at the end of `run` receives them.
sigset_t blockEndSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

bool reportReady(const Arguments& arguments, int port, const std::string& authority) {
    std::printf("listening on https://localhost:%d\n%s\n", port, authority.c_str());
    std::fflush(stdout);
    if (arguments.readyFile.empty()) return true;
    auto ready =
        json::write(ValueMap{{"port", port}, {"ca", authority}, {"pid", static_cast<std::int64_t>(::getpid())}});
    return files::writeAtomically(arguments.readyFile, ready.value_or(""));
}

int run(Arguments arguments) {
    auto signals = blockEndSignals();
    auto hosts = defaultHostNames();
    hosts.insert(hosts.end(), arguments.hostNames.begin(), arguments.hostNames.end());
    auto certificates = ensureCertificates(arguments.stateFolder, hosts);
    if (!certificates) return fail(certificates.error());
    auto authority = certificates->authority;
    if (!arguments.authorityCopy.empty()) {
        if (!files::copy(authority, arguments.authorityCopy)) return fail("cannot write " + arguments.authorityCopy);
        authority = arguments.authorityCopy;
    }

    arguments.sandbox.logPath = arguments.stateFolder + "/requests.log";
    Sandbox sandbox(arguments.sandbox, [] { ::kill(::getpid(), SIGTERM); });
    HttpsServer server(certificates->server, [&](const Request& request) { return sandbox.handle(request); });
    auto port = server.start(arguments.port);
    if (!port) return fail(port.error());
    if (!reportReady(arguments, *port, authority)) return fail("cannot write " + arguments.readyFile);

    int received = 0;
    sigwait(&signals, &received);
    sandbox.endDelays();
    server.stop();
    return 0;
}

}  // namespace

int main(int count, char** values) {
    auto parsed = parseArguments(count, values);
    if (auto* end = std::get_if<EarlyEnd>(&parsed)) {
        std::fprintf(end->status == 0 ? stdout : stderr, "%s\n", end->text.c_str());
        return end->status;
    }
    return run(std::get<Arguments>(std::move(parsed)));
}
