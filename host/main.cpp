#include <sys/resource.h>
#include <csignal>
#include <cstdio>
#include <new>

#include "host/Arguments.h"
#include "host/Host.h"
#include "host/commands/ChangeCommands.h"
#include "host/commands/Console.h"
#include "host/commands/FieldsCommand.h"
#include "host/commands/FiltersCommand.h"
#include "host/commands/InitCommand.h"
#include "host/commands/ListCommand.h"
#include "host/commands/ModulesCommand.h"
#include "host/commands/NoteCommands.h"
#include "host/commands/ShowCommand.h"
#include "host/commands/SyncCommands.h"
#include "host/commands/ViewsCommand.h"
#include "host/serve/Serve.h"
#include "platform/Log.h"

namespace {

using namespace tarvo;
using namespace tarvo::host;

int run(Arguments& arguments) {
    bool logs = arguments.verbose || arguments.command == Command::serve;
    platform::setLogSink([logs](std::string_view line) {
        if (logs) writeLogLine(line);
    });
    auto host = Host::setUp(arguments);
    if (!host) return fail(host.error(), 2);
    switch (arguments.command) {
        case Command::init:
            return initAccount(**host, arguments);
        case Command::modules:
            return listModules(**host, arguments);
        case Command::fields:
            return listFields(**host, arguments);
        case Command::views:
            return listViews(**host, arguments);
        case Command::filters:
            return listFilters(**host, arguments);
        case Command::list:
            return listRecords(**host, arguments);
        case Command::show:
            return showRecord(**host, arguments);
        case Command::add:
            return addRecord(**host, arguments);
        case Command::edit:
            return editRecord(**host, arguments);
        case Command::note:
            return noteRecord(**host, arguments);
        case Command::delete_:
            return deleteRecord(**host, arguments);
        case Command::pending:
            return listPending(**host, arguments);
        case Command::retry:
            return retryChanges(**host, arguments);
        case Command::cancel:
            return cancelChanges(**host, arguments);
        case Command::why:
            return explainChanges(**host, arguments);
        case Command::drain:
            return drainChanges(**host, arguments);
        case Command::sync:
            return syncModules(**host, arguments);
        case Command::changes:
            return showLastRound(**host, arguments);
        case Command::download:
            return downloadModules(**host, arguments);
        case Command::serve:
            return serve(**host);
    }
    return 2;
}

}  // namespace

int main(int count, char** values) {
    // A reader that goes away is noticed as a failed write.
    std::signal(SIGPIPE, SIG_IGN);
    // A file that must not grow is a failed write, like a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    auto parsed = parseArguments(count, values);
    if (auto* end = std::get_if<EarlyEnd>(&parsed)) {
        if (end->status != 0) return fail(end->text, end->status);
        std::printf("%s\n", end->text.c_str());
        return 0;
    }
    auto& arguments = std::get<Arguments>(parsed);
    // A core dump would hold the passphrase, the token and decrypted pages.
    constexpr rlimit none{0, 0};
    if (!arguments.coreDumps) ::setrlimit(RLIMIT_CORE, &none);
    try {
        return run(arguments);
    } catch (const std::bad_alloc&) {
        return fail("memory ran out");
    }
}
