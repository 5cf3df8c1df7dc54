#include "sandbox/SandboxArguments.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <filesystem>

#include "sandbox/Certificates.h"

namespace tarvo::sandbox {
namespace {

std::string defaultStateFolder() {
    if (const char* state = std::getenv("XDG_STATE_HOME"); state && *state)
        return std::string(state) + "/tarvo-sandbox";
    if (const char* home = std::getenv("HOME"); home && *home) return std::string(home) + "/.local/state/tarvo-sandbox";
    return "tarvo-sandbox-state";
}

// Reads "ID:TOKEN". The text never goes into a message, since half of it is a secret.
std::string checkAccount(const std::string& text) {
    auto colon = text.find(':');
    bool whole = colon != std::string::npos && colon > 0 && colon + 1 < text.size();
    return whole ? "" : "an account is ID:TOKEN";
}

Account toAccount(const std::string& text) {
    auto colon = text.find(':');
    return {text.substr(0, colon), text.substr(colon + 1)};
}

std::string oneLine(std::string text) {
    for (auto& c : text)
        if (c == '\n' || c == '\r') c = ' ';
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text;
}

}  // namespace

std::variant<Arguments, EarlyEnd> parseArguments(int count, const char* const* values) {
    Arguments arguments;
    arguments.stateFolder = defaultStateFolder();
    std::vector<std::string> accounts, tokens;
    std::string naming = "servlet", sharing = "everybody";

    CLI::App app("A CRM server on loopback to develop and test against.", "tarvo-sandbox");
    app.add_option("--port", arguments.port, "Port to listen on; 0 picks a free one")->check(CLI::Range(0, 65535));
    app.add_option("--state", arguments.stateFolder, "Folder of the authority, the certificate and the request log");
    app.add_option("--ca", arguments.authorityCopy, "Write the authority's certificate to this file as well");
    app.add_option("--account", accounts, "Account and token that may call, ID:TOKEN")
        ->check(CLI::Validator([](std::string& text) { return checkAccount(text); }, "ID:TOKEN"));
    app.add_option("--token", tokens, std::string("Further token of the account ") + defaultAccountId);
    app.add_option("--seed", arguments.sandbox.seed, "Seed of the data set")->check(CLI::NonNegativeNumber);
    app.add_option("--records", arguments.sandbox.recordsPerModule, "Records in each module")
        ->check(CLI::Range(0, 100000));
    app.add_option("--sync-page", arguments.sandbox.syncPage, "Records in a page of changes at most")
        ->check(CLI::Range(1, 10000));
    app.add_option("--list-reset", arguments.sandbox.listReset, "Changes of a list at most; more of them reset it")
        ->check(CLI::Range(0, 100000));
    app.add_option("--data-per", sharing, "Who has a data set of their own")
        ->check(CLI::IsMember({"everybody", "account", "organisation"}));
    app.add_option("--identifier", naming, "How fields are named")->check(CLI::IsMember({"servlet", "column", "api"}));
    app.add_option("--host-name", arguments.hostNames, "Further name or address for the certificate")
        ->check(CLI::Validator([](std::string& text) { return isHost(text) ? "" : "\"" + text + "\" is no host name"; },
                               "NAME"));
    app.add_option("--ready-file", arguments.readyFile, "File that says port and authority once the server listens");
    app.add_flag("--log-values", arguments.sandbox.logValues, "Log the values of parameters too");
    try {
        app.parse(count, values);
    } catch (const CLI::CallForHelp&) {
        return EarlyEnd{0, app.help()};
    } catch (const CLI::ParseError& error) {
        return EarlyEnd{2, "tarvo-sandbox: " + oneLine(error.what())};
    }

    // Clients that read the ready file may run in another folder.
    arguments.stateFolder = std::filesystem::absolute(arguments.stateFolder).string();
    if (!arguments.authorityCopy.empty())
        arguments.authorityCopy = std::filesystem::absolute(arguments.authorityCopy).string();
    if (naming != "servlet") arguments.sandbox.naming = naming == "column" ? Naming::column : Naming::api;
    if (sharing != "everybody")
        arguments.sandbox.dataSharing = sharing == "account" ? DataSharing::account : DataSharing::organisation;
    for (const auto& account : accounts) arguments.sandbox.accounts.push_back(toAccount(account));
    for (const auto& token : tokens) arguments.sandbox.accounts.push_back({defaultAccountId, token});
    if (arguments.sandbox.accounts.empty()) arguments.sandbox.accounts.push_back({defaultAccountId, defaultToken});
    return arguments;
}

}  // namespace tarvo::sandbox
