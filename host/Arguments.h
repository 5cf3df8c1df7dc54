#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/Secret.h"
#include "tarvobase/configuration/ServerTypes.h"
#include "tarvobase/download/DownloadRecordsMaxCount.h"

namespace tarvo::host {

enum class Command {
    init,
    modules,
    fields,
    views,
    filters,
    list,
    show,
    add,
    edit,
    note,
    delete_,
    pending,
    retry,
    cancel,
    why,
    drain,
    sync,
    changes,
    download,
    serve
};
enum class Identifier { column, api };

/// The arguments of the command line.
struct Arguments {
    Command command = Command::serve;
    std::string home;  ///< absolute
    std::optional<std::string> account;
    std::optional<std::string> token;
    std::optional<platform::Secret> passphrase;
    int serverType = 1;
    std::optional<std::string> domain;
    std::optional<std::string> prefix;
    std::string authorityFile;  ///< empty for none
    ServletPathV4 servlet = ServletPathV4::crm;
    std::string module;  ///< whose fields, views or filters are wanted
    std::string field;   ///< whose filters are wanted
    std::string recordId;
    std::optional<std::string> view;   ///< id or name
    std::vector<std::string> columns;  ///< of the list, by name; empty for those of the view
    std::int64_t from = 0;
    std::int64_t limit = 20;
    std::vector<std::string> filters;      ///< FIELD:TYPE:VALUE[,VALUE]
    std::optional<std::string> sort;       ///< FIELD[:asc|desc]
    std::vector<std::string> values;       ///< FIELD=VALUE of a record; an empty value clears the field
    std::string text;                      ///< of a note
    std::optional<std::string> title;      ///< of a note
    std::optional<std::string> voiceFile;  ///< path of the sound of a note
    std::vector<std::string> modules;      ///< to sync or to download; empty for all
    DownloadRecordsMaxCount maxDownloadCount = DownloadRecordsMaxCount::defaultMaxCount;
    std::vector<std::int64_t> numbers;  ///< of the changes to retry, cancel or explain; empty for all
    bool revert = false;                ///< whether cancelled changes are taken back from their records
    bool withWaiters = false;           ///< whether what hangs on cancelled changes goes with them
    bool wait = true;                   ///< for the server's answer to a change
    Identifier identifier = Identifier::column;
    bool json = false;
    bool fetch = false;
    bool verbose = false;
    bool coreDumps = false;
};

/// An end before any work is done: help, or one line that says what is wrong with the arguments.
struct EarlyEnd {
    int status;
    std::string text;
};

/// Reads the command line and blanks the passphrase and the token in it, so that a listing of processes shows neither.
/// Blanks the passphrase in the environment, too. No copy of the passphrase is left but the one that is returned.
std::variant<Arguments, EarlyEnd> parseArguments(int count, char** values);

}  // namespace tarvo::host
