#pragma once

#include <string>
#include <variant>
#include <vector>

#include "sandbox/Sandbox.h"

namespace tarvo::sandbox {

/// Holds what the command line of the program says.
struct Arguments {
    int port = 0;
    std::string stateFolder;
    /// A further path to which the authority's certificate is written; empty for none.
    std::string authorityCopy;
    std::string readyFile;
    std::vector<std::string> hostNames;
    SandboxOptions sandbox;
};

/// Says that the program should end at once with this status, after printing a text for people.
struct EarlyEnd {
    int status;
    std::string text;
};

/// Reads the command line. Wrong arguments give an `EarlyEnd` with status 2 and one line, "--help" one with status 0.
std::variant<Arguments, EarlyEnd> parseArguments(int count, const char* const* values);

}  // namespace tarvo::sandbox
