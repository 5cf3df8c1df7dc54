#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/Data.h"
#include "platform/Value.h"
#include "tarvobase/network_layer/ParserError.h"

namespace tarvo {

/// The plain envelope of an answer: a list of errors, or a list of entries with the server's times in milliseconds.
struct ParsedJSON {
    std::optional<ValueList> error;
    std::optional<std::vector<ValueMap>> result;
    std::uint64_t serverTime = 0;
    std::uint64_t responseTime = 0;
};

/// Reads the plain envelope. Absent when the body is no such thing. Each time falls to 0 by itself.
struct Parser {
    static std::optional<ParsedJSON> getJSONData(const platform::Data& data);
    /// The same without times.
    static std::optional<ParsedJSON> getOldJSONData(const platform::Data& data);
};

/// A list whose items all are maps; nothing otherwise.
std::optional<std::vector<ValueMap>> listOfMaps(const Value* value);

}  // namespace tarvo
