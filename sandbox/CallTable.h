#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "sandbox/Message.h"

namespace tarvo::sandbox {

class DataSet;
class ServerClock;

/// Says how a client names the fields of a module: by column or by API name.
enum class Naming { column, api };

/// Holds one call while it is handled: who asks for what, through which servlet and version.
struct Call {
    const Request& request;
    const std::string& account;
    DataSet& data;
    /// The time of the server's clock, in milliseconds since 1970. No other call has it, and no change.
    std::int64_t now;
    ServerClock& clock;
    Naming naming;
    int version;
    /// The path after the version: "getappinitdata", "products/addrecord".
    std::string name;
};

/// Describes one call of the server. Handlers run one at a time, so they read and change the data set without locks.
struct CallRow {
    std::string_view method;
    std::string_view name;
    Reply (*handle)(const Call& call);
};

/// Returns the table of calls. A new call is a new row here.
std::span<const CallRow> callTable();

/// Holds the servlet, the version and the name of a path "/{crm|vestra}/v{2..5}/{call}".
struct CallPath {
    std::string servlet;
    int version;
    std::string name;
};
/// Returns nullopt for a path of any other form.
std::optional<CallPath> parseCallPath(std::string_view path);

}  // namespace tarvo::sandbox
