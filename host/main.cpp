#include <csignal>
#include <cstdio>

#include "host/Arguments.h"
#include "host/Console.h"
#include "host/FieldsCommand.h"
#include "host/FiltersCommand.h"
#include "host/Host.h"
#include "host/InitCommand.h"
#include "host/ListCommand.h"
#include "host/ModulesCommand.h"
#include "host/Serve.h"
#include "host/ShowCommand.h"
#include "host/ViewsCommand.h"
#include "platform/Log.h"

namespace {

using namespace tarvo;
using namespace tarvo::host;

int run(const Arguments& arguments) {
    bool logs = arguments.verbose || arguments.command == Command::serve;
    if (!logs) platform::setLogSink([](std::string_view) {});
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
        case Command::serve:
            return serve(**host, arguments);
    }
    return 2;
}

}  // namespace

int main(int count, char** values) {
    // A reader that goes away shows as a failed write.
    std::signal(SIGPIPE, SIG_IGN);
    auto parsed = parseArguments(count, values);
    if (auto* end = std::get_if<EarlyEnd>(&parsed)) {
        std::fprintf(end->status == 0 ? stdout : stderr, "%s\n", end->text.c_str());
        return end->status;
    }
    return run(std::get<Arguments>(parsed));
}
