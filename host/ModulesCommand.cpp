#include "host/ModulesCommand.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <tuple>

#include "bridge/JsonForm.h"
#include "host/Console.h"
#include "host/InitStep.h"
#include "platform/DispatchQueue.h"
#include "platform/Json.h"
#include "tarvobase/get_metadata/GetModulesUC.h"
#include "tarvobase/value_objects/ModuleInDatabase.h"

namespace tarvo::host {

namespace {

// Longer than a request may take; the library answers before.
constexpr std::chrono::seconds patience{150};

std::vector<std::string> storedModuleNames(const std::shared_ptr<DatabaseAdapter>& database) {
    ModuleDatabaseConstants constants;
    std::string table(constants.TableName);
    if (database->columnNames(table).empty()) return {};
    std::vector<std::string> names;
    if (auto modules = ModuleInDatabase(table, database, constants).getAllModules())
        for (auto& module : *modules) names.push_back(module.moduleName);
    return names;
}

std::string explanation(const InitOutcome& outcome) {
    if (outcome.notice == "networkResponseError") return "the server did not answer";
    if (outcome.notice == "parsingError") return "the server's answer cannot be used; the token may be wrong";
    if (outcome.notice == "noAuthtoken") return "the account has no token";
    return "the server's data could not be fetched (" + outcome.notice + ")";
}

// Why it could not be done, or nothing.
std::optional<std::string> fetch(Host& host) {
    auto outcome = std::make_shared<std::optional<InitOutcome>>();
    auto run = runInitStep(host.database(), [outcome](InitOutcome ended) {
        MainQueue::shared()->async([outcome, ended = std::move(ended)] { *outcome = ended; });
    });
    if (!MainQueue::shared()->runUntil([&] { return outcome->has_value(); }, patience))
        return "the server did not answer in time";
    return (*outcome)->isStored() ? std::nullopt : std::optional(explanation(**outcome));
}

std::optional<std::vector<Module>> modulesNamed(std::vector<std::string> names) {
    struct Answer {
        std::optional<std::vector<Module>> modules;
        bool isThere = false;
    };
    auto answer = std::make_shared<Answer>();
    auto usecase = std::make_shared<GetModulesUC>();
    usecase->execute(GetModulesUC::Request(std::move(names)),
                     [answer](const GetModulesUC::Response* response, const GetModulesUC::Failure*) {
                         if (response) answer->modules = response->modules;
                         answer->isThere = true;
                     });
    MainQueue::shared()->runUntil([&] { return answer->isThere; }, patience);
    return answer->modules;
}

bool standsBefore(const Module& a, const Module& b) {
    return std::tie(a.position, a.moduleName) < std::tie(b.position, b.moduleName);
}

std::string forPeople(const std::vector<Module>& modules, const std::string& path) {
    std::vector<std::vector<std::string>> rows = {{"NAME", "LABEL", "PLURAL", "API NAME", "TYPE"}};
    for (auto& module : modules)
        rows.push_back({module.moduleName, module.singularName, module.pluralName, module.apiName,
                        std::string(rawText(module.type))});
    return tableText(rows) + "\n" + std::to_string(modules.size()) + " modules, read from the encrypted database " +
           path + "\n";
}

std::string forPrograms(const std::vector<Module>& modules, const std::string& path) {
    return json::write(ValueMap{{"modules", bridge::toJson(modules)}, {"database", bridge::toJson(path)}})
               .value_or("") +
           "\n";
}

std::string whyNotOpened(const Host::OpeningFailure& failure, const std::string& account) {
    if (failure.kind == Host::OpeningFailure::Kind::wrongPassphrase)
        return "wrong passphrase: it does not open the database of account " + account;
    return "the database of account " + account + " cannot be opened: " + failure.message;
}

}  // namespace

int listModules(Host& host, const Arguments& arguments) {
    auto path = host.openDatabase(*arguments.passphrase);
    if (!path) return fail(whyNotOpened(path.error(), *arguments.account));

    auto names = storedModuleNames(host.database());
    if (names.empty() || arguments.fetch) {
        if (!arguments.token) return fail("--token is required to sign in and fetch the modules", 2);
        if (auto failure = fetch(host)) return fail(*failure);
        names = storedModuleNames(host.database());
    }

    auto modules = modulesNamed(std::move(names));
    if (!modules) return fail("the modules could not be read from " + *path);
    std::sort(modules->begin(), modules->end(), standsBefore);
    auto text = arguments.json ? forPrograms(*modules, *path) : forPeople(*modules, *path);
    bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    return written ? 0 : fail("standard output cannot be written");
}

}  // namespace tarvo::host
