#include "host/CommandSteps.h"

#include <cstdio>

#include "host/Console.h"
#include "host/InitStep.h"
#include "tarvobase/value_objects/ModuleInDatabase.h"

namespace tarvo::host {

Result<std::string, int> openDatabase(Host& host, const Arguments& arguments) {
    auto path = host.openDatabase(*arguments.passphrase);
    if (path) return *path;
    auto account = "the database of account " + *arguments.account;
    if (path.error().kind == Host::OpeningFailure::Kind::wrongPassphrase)
        return fail("wrong passphrase: it does not open " + account);
    return fail(account + " cannot be opened: " + path.error().message);
}

std::vector<std::string> storedModuleNames(const std::shared_ptr<DatabaseAdapter>& database) {
    ModuleDatabaseConstants constants;
    std::string table(constants.TableName);
    if (database->columnNames(table).empty()) return {};
    std::vector<std::string> names;
    if (auto modules = ModuleInDatabase(table, database, constants).getAllModules())
        for (auto& module : *modules) names.push_back(module.moduleName);
    return names;
}

std::optional<std::string> fetchModules(Host& host) {
    auto outcome = awaited<InitOutcome>([&](auto whenEnded) { return runInitStep(host.database(), whenEnded); });
    if (!outcome) return "the server did not answer in time";
    return outcome->isStored() ? std::nullopt : std::optional(explanationOf(outcome->notice));
}

std::string explanationOf(const std::string& notice) {
    if (notice == "networkResponseError") return "the server did not answer";
    if (notice == "parsingError") return "the server's answer cannot be used; the token may be wrong";
    if (notice == "noAuthtoken") return "the account has no token";
    return "the server's data could not be fetched (" + notice + ")";
}

int print(const std::string& text) {
    bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    return written ? 0 : fail("standard output cannot be written");
}

}  // namespace tarvo::host
