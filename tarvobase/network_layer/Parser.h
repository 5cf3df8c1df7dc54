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

/// Reads the plain envelope. Returns nullopt if the body is not one. A time that cannot be read is 0.
struct Parser {
    static std::optional<ParsedJSON> getJSONData(const platform::Data& data);
    /// Reads the envelope without its times.
    static std::optional<ParsedJSON> getOldJSONData(const platform::Data& data);
};

/// Returns the items of a list of maps, or nullopt if the value is not a list or has other items.
std::optional<std::vector<ValueMap>> listOfMaps(const Value* value);

}  // namespace tarvo
