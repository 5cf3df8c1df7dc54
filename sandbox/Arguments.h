#pragma once

#include <string>
#include <variant>
#include <vector>

#include "sandbox/Sandbox.h"

namespace tarvo::sandbox {

/// What the command line of the program says.
struct Arguments {
    int port = 0;
    std::string stateFolder;
    /// A further place for the authority's certificate; empty for none.
    std::string authorityCopy;
    std::string readyFile;
    std::vector<std::string> hostNames;
    SandboxOptions sandbox;
};

/// The program is to end at once with this status, after a text for people.
struct EarlyEnd {
    int status;
    std::string text;
};

/// Reads the command line. Wrong arguments end with status 2 and one line, "--help" with 0.
std::variant<Arguments, EarlyEnd> parseArguments(int count, const char* const* values);

}  // namespace tarvo::sandbox
