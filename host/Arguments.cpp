#include "host/Arguments.h"

#include <unistd.h>
#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <utility>

namespace tarvo::host {

namespace {

using platform::Secret;

constexpr const char* passphraseVariable = "TARVO_PASSPHRASE";

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string defaultHome() {
    if (auto data = variable("XDG_DATA_HOME"); !data.empty()) return data + "/tarvo-host";
    if (auto home = variable("HOME"); !home.empty()) return home + "/.local/share/tarvo-host";
    return "tarvo-host-data";
}

/// Returns the value of "--option TEXT" or "--option=TEXT" and puts stars in its place: nothing else may copy it, and
/// listings of processes show it otherwise. Nullopt if the option is not there.
std::optional<Secret> takeOut(std::string_view option, int count, char** values) {
    auto taken = [](char* text) {
        std::string value = text;
        std::memset(text, '*', value.size());
        return Secret(std::move(value));
    };
    for (int i = 1; i < count; ++i) {
        std::string_view value = values[i];
        if (value == option && i + 1 < count) return taken(values[i + 1]);
        if (value.starts_with(option) && value.substr(option.size()).starts_with("="))
            return taken(values[i] + option.size() + 1);
    }
    return std::nullopt;
}

/// Returns the value of a variable and wipes it: the text of one that is merely removed stays in the block of the
/// environment, which others can read. Nullopt if it is absent or empty.
std::optional<Secret> takeVariable(const char* name) {
    auto held = std::getenv(name);
    if (!held) return std::nullopt;
    std::string value = held;
    ::explicit_bzero(held, value.size());
    ::unsetenv(name);
    return value.empty() ? std::nullopt : std::optional(Secret(std::move(value)));
}

// Reads up to the end of the line. Nullopt if the descriptor cannot be read.
std::optional<Secret> lineOf(int descriptor) {
    std::string line;
    line.reserve(4096);  // a text that grows leaves copies
    char byte = 0;
    for (;;) {
        auto count = ::read(descriptor, &byte, 1);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0 || byte == '\n') break;
        line += byte;
    }
    if (descriptor > STDERR_FILENO) ::close(descriptor);
    return Secret(std::move(line));
}

std::string oneLine(std::string text) {
    for (auto& c : text)
        if (c == '\n' || c == '\r') c = ' ';
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text;
}

EarlyEnd wrong(const std::string& why) { return {2, oneLine(why)}; }

// Returns what is wrong beyond what the parser checks.
std::optional<EarlyEnd> faultOf(const Arguments& arguments) {
    if (arguments.account && arguments.account->empty()) return wrong("--account: an account id is not empty");
    if (arguments.passphrase && arguments.passphrase->text().empty())
        return wrong("--passphrase: a passphrase is not empty");
    if (arguments.command == Command::serve) return std::nullopt;
    if (!arguments.account) return wrong("--account is required");
    if (!arguments.passphrase) return wrong(std::string("--passphrase or ") + passphraseVariable + " is required");
    return std::nullopt;
}

}  // namespace

std::variant<Arguments, EarlyEnd> parseArguments(int count, char** values) {
    Arguments arguments;
    arguments.home = defaultHome();
    std::string servlet = "crm", identifier, stars;
    std::optional<int> passphraseDescriptor;
    auto token = takeOut("--token", count, values);
    arguments.passphrase = takeOut("--passphrase", count, values);
    auto variable = takeVariable(passphraseVariable);

    CLI::App app("A console host of TarvoBase.", "tarvo-host");
    app.fallthrough();
    app.require_subcommand(1);
    app.add_option("--home", arguments.home, "Folder of databases and settings");
    app.add_option("--account", arguments.account, "Id of the account");
    app.add_option("--token", stars, "Token of the account");
    app.add_option("--passphrase", stars, "Passphrase of the database; TARVO_PASSPHRASE in the environment otherwise");
    app.add_option("--passphrase-fd", passphraseDescriptor, "File descriptor from which a line with it is read")
        ->check(CLI::NonNegativeNumber);
    app.add_option("--server-type", arguments.serverType, "Server environment; 0 is a server on loopback")
        ->check(CLI::Range(0, 11));
    app.add_option("--domain", arguments.domain, "Domain of the server, with a port where it has one");
    app.add_option("--prefix", arguments.prefix, "Prefix of the server's name for a data centre");
    app.add_option("--ca", arguments.authorityFile, "File of a further authority to trust")->check(CLI::ExistingFile);
    app.add_option("--servlet", servlet, "The server's edition")->check(CLI::IsMember({"crm", "lumet"}));
    app.add_option("--identifier", identifier, "How fields are named")->check(CLI::IsMember({"column", "api"}));
    app.add_flag("--json", arguments.json, "Print for programs");
    app.add_flag("--core-dumps", arguments.coreDumps, "Let a crash write a core dump, which holds secrets");
    app.add_flag("--verbose", arguments.verbose, "Print the library's log to standard error");
    auto init = app.add_subcommand("init", "Download the account for the first time, with a summary");
    init->add_flag("--fetch", arguments.fetch, "Run it also when the account is complete");
    auto modules =
        app.add_subcommand("modules", "List the modules; signs in and fetches them first when none are stored");
    modules->add_flag("--fetch", arguments.fetch, "Ask the server also when modules are stored");
    auto fields = app.add_subcommand(
        "fields", "List the fields of a module by layout and section; fetches them first when none are stored");
    auto views = app.add_subcommand("views", "List the views of a module; fetches them first when none are stored");
    auto filters = app.add_subcommand(
        "filters", "List the filters that a field offers; fetches the module's fields first when none are stored");
    for (auto command : {fields, views, filters}) {
        command->add_option("MODULE", arguments.module, "Name of the module")->required();
        command->add_flag("--fetch", arguments.fetch, "Ask the server also when what is asked for is stored");
    }
    filters->add_option("FIELD", arguments.field, "API name or column of the field")->required();
    auto list = app.add_subcommand("list", "List a page of the records of a view");
    auto show = app.add_subcommand("show", "Show one record by the sections of its layout");
    for (auto command : {list, show}) command->add_option("MODULE", arguments.module, "Name of the module")->required();
    list->add_option("--view", arguments.view, "Id or name of the view; the default one when absent");
    list->add_option("--from", arguments.from, "How many records to pass over")->check(CLI::NonNegativeNumber);
    list->add_option("--limit", arguments.limit, "How many records to list, 20 when absent")
        ->check(CLI::PositiveNumber);
    list->add_option("--columns", arguments.columns, "NAME[,NAME], in place of the columns that the view shows")
        ->delimiter(',')
        ->allow_extra_args(false);
    list->add_option("--filter", arguments.filters,
                     "FIELD:TYPE:VALUE[,VALUE], as the command filters lists them; repeatable")
        ->allow_extra_args(false);
    list->add_option("--sort", arguments.sort, "FIELD, FIELD:asc or FIELD:desc; sorts the stored records");
    show->add_option("ID", arguments.recordId, "Id of the record")->required();
    auto add =
        app.add_subcommand("add", "Add a record: it is stored and queued at once, and sent when that is possible");
    auto edit = app.add_subcommand("edit", "Edit a record in the same way");
    auto note = app.add_subcommand("note", "Add a note to a record in the same way");
    auto remove = app.add_subcommand("delete", "Delete a record in the same way");
    auto pending = app.add_subcommand("pending", "List the changes that the server does not have yet");
    auto retry = app.add_subcommand("retry", "Send changes again that have failed");
    auto cancel = app.add_subcommand("cancel", "Take changes back that the server does not have");
    auto why = app.add_subcommand("why", "Say why changes wait");
    auto drain = app.add_subcommand("drain", "Send the changes that wait");
    for (auto command : {add, edit, note, remove})
        command->add_option("MODULE", arguments.module, "Name of the module")->required();
    for (auto command : {edit, note, remove})
        command->add_option("ID", arguments.recordId, "Id of the record, also a former temporary one")->required();
    for (auto command : {add, edit})
        command->add_option("VALUES", arguments.values, "FIELD=VALUE by API name or column; FIELD= clears the field")
            ->required();
    note->add_option("TEXT", arguments.text, "Text of the note")->required();
    note->add_option("--title", arguments.title, "Title of the note");
    note->add_option("--voice", arguments.voiceFile, "File of a sound, which makes it a voice note")
        ->check(CLI::ExistingFile);
    retry->add_option("NUMBERS", arguments.numbers, "Numbers of the changes as pending lists them; all when absent");
    cancel->add_option("NUMBERS", arguments.numbers, "Numbers of the changes as pending lists them")->required();
    cancel->add_flag("--revert", arguments.revert, "Give the records the values that they had before");
    cancel->add_flag("--with-waiters", arguments.withWaiters, "Cancel what hangs on a cancelled add as well");
    why->add_option("NUMBERS", arguments.numbers, "Numbers of the changes as pending lists them; all when absent");
    for (auto command : {add, edit, note, remove, retry, drain})
        command->add_flag("!--no-wait", arguments.wait, "Do not wait for the server's answer");
    auto sync = app.add_subcommand("sync", "Send what waits, and bring the records of modules up to date");
    sync->add_option("MODULES", arguments.modules, "Names of modules; all when absent");
    auto changes = app.add_subcommand("changes", "Show what the last sync of a module brought");
    changes->add_option("MODULE", arguments.module, "Name of the module")->required();
    auto download = app.add_subcommand("download", "Download records of modules, from where the last download ended");
    download->add_option("MODULES", arguments.modules, "Names of modules")->required();
    bool isMore = false, isLimited = false;
    auto more = download->add_flag("--more", isMore, "One page more, whatever the limit of the module");
    download->add_flag("--limit", isLimited, "Up to the limit that the user has chosen")->excludes(more);
    app.add_subcommand("serve", "Take calls as lines of JSON from standard input");
    try {
        app.parse(count, values);
    } catch (const CLI::CallForHelp&) {
        return EarlyEnd{0, app.help()};
    } catch (const CLI::ParseError& error) {
        return wrong(error.what());
    }

    if (token) arguments.token = token->text();
    if (!arguments.passphrase) arguments.passphrase = std::move(variable);
    if (passphraseDescriptor) {
        arguments.passphrase = lineOf(*passphraseDescriptor);
        if (!arguments.passphrase) return wrong("--passphrase-fd: the descriptor cannot be read");
    }
    for (auto [parsed, command] :
         {std::pair(modules, Command::modules), std::pair(fields, Command::fields), std::pair(views, Command::views),
          std::pair(filters, Command::filters), std::pair(init, Command::init), std::pair(list, Command::list),
          std::pair(show, Command::show), std::pair(add, Command::add), std::pair(edit, Command::edit),
          std::pair(note, Command::note), std::pair(remove, Command::delete_), std::pair(pending, Command::pending),
          std::pair(retry, Command::retry), std::pair(cancel, Command::cancel), std::pair(why, Command::why),
          std::pair(drain, Command::drain), std::pair(sync, Command::sync), std::pair(changes, Command::changes),
          std::pair(download, Command::download)})
        if (parsed->parsed()) arguments.command = command;
    if (isMore) arguments.maxDownloadCount = DownloadRecordsMaxCount::loadMore;
    if (isLimited) arguments.maxDownloadCount = DownloadRecordsMaxCount::defaultOrUserMaxCount;
    arguments.home = std::filesystem::absolute(arguments.home).string();
    arguments.servlet = *fromCaseName<ServletPathV4>(servlet);
    // The servers of the editions name tables differently.
    if (identifier.empty()) identifier = servlet == "crm" ? "column" : "api";
    arguments.identifier = identifier == "column" ? Identifier::column : Identifier::api;
    if (auto fault = faultOf(arguments)) return *fault;
    return arguments;
}

}  // namespace tarvo::host
