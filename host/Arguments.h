#pragma once

#include <optional>
#include <string>
#include <variant>

#include "tarvobase/configuration/ServerTypes.h"

namespace tarvo::host {

enum class Command { modules, fields, views, filters, serve };
enum class Identifier { column, api };

/// What the command line says.
struct Arguments {
    Command command = Command::serve;
    std::string home;  ///< absolute
    std::optional<std::string> account;
    std::optional<std::string> token;
    std::optional<std::string> passphrase;
    int serverType = 1;
    std::optional<std::string> domain;
    std::optional<std::string> prefix;
    std::string authorityFile;  ///< empty for none
    ServletPathV4 servlet = ServletPathV4::crm;
    std::string module;  ///< whose fields, views or filters are wanted
    std::string field;   ///< whose filters are wanted
    Identifier identifier = Identifier::column;
    bool json = false;
    bool fetch = false;
    bool verbose = false;
};

/// The program ends before it begins: help, or arguments that are wrong.
struct EarlyEnd {
    int status;
    std::string text;
};

/// Reads the command line and blanks the passphrase and the token in it, so that a listing of processes shows neither.
std::variant<Arguments, EarlyEnd> parseArguments(int count, char** values);

}  // namespace tarvo::host
