#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "sandbox/Message.h"

namespace tarvo::sandbox {

class DataSet;

/// What a client calls the fields of a module: by column or by API name.
enum class Naming { column, api };

/// One call on its way: who asks what, through which servlet and version.
struct Call {
    const Request& request;
    const std::string& account;
    DataSet& data;
    /// Milliseconds of the server's clock.
    std::int64_t now;
    Naming naming;
    int version;
    /// Path behind the version: "getappinitdata", "products/addrecord".
    std::string name;
};

/// A row of the table of calls. Handlers run one at a time, so they read and change the data set without locks.
struct CallRow {
    std::string_view method;
    std::string_view name;
    Reply (*handle)(const Call& call);
};

/// The table of calls. A new call is a new row here.
std::span<const CallRow> callTable();

/// The three parts of a path "/{crm|vestra}/v{2..5}/{call}", or nothing for another path.
struct CallPath {
    std::string servlet;
    int version;
    std::string name;
};
std::optional<CallPath> parseCallPath(std::string_view path);

}  // namespace tarvo::sandbox
