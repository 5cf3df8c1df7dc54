#include "host/commands/ModulesCommand.h"

#include <algorithm>
#include <tuple>

#include "bridge/forms/JsonForm.h"
#include "host/commands/CommandSteps.h"
#include "host/commands/Console.h"
#include "platform/Json.h"
#include "tarvobase/get_metadata/GetModulesUC.h"

namespace tarvo::host {

namespace {

std::optional<std::vector<Module>> askModules(std::vector<std::string> names) {
    using Modules = std::optional<std::vector<Module>>;
    auto answer = awaited<Modules>([&](auto answered) {
        auto usecase = std::make_shared<GetModulesUC>();
        usecase->execute(GetModulesUC::Request(std::move(names)),
                         [answered](const GetModulesUC::Response* response, const GetModulesUC::Failure*) {
                             answered(response ? Modules(response->modules) : std::nullopt);
                         });
        return usecase;
    });
    return answer.value_or(std::nullopt);
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

}  // namespace

int listModules(Host& host, const Arguments& arguments) {
    auto path = openDatabase(host, arguments);
    if (!path) return path.error();

    auto names = storedModuleNames(host.database());
    if (names.empty() || arguments.fetch) {
        if (!arguments.token) return fail("--token is required to sign in and fetch the modules", 2);
        if (auto failure = fetchModules(host)) return fail(*failure);
        names = storedModuleNames(host.database());
    }

    auto modules = askModules(std::move(names));
    if (!modules) return fail("the modules could not be read from " + *path);
    std::sort(modules->begin(), modules->end(), standsBefore);
    return arguments.json ? printForPrograms(forPrograms(*modules, *path)) : printForPeople(forPeople(*modules, *path));
}

}  // namespace tarvo::host
