#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/Data.h"
#include "platform/Value.h"

namespace tarvo::platform::json {

/// Reads a whole JSON document, fragments (a bare number, a text, null) included. Returns nullopt if it is not JSON, is
/// not UTF-8, or is nested deeper than 1,000 levels. Of two equal keys of a map the last one counts. A whole number
/// that does not fit in 64 signed bits becomes a real, and an escaped half of a surrogate pair becomes U+FFFD. Any
/// thread may call this; each keeps a parser of its own.
std::optional<Value> parse(const Data& data);
/// The same for a text without padding after it, which is copied first.
std::optional<Value> parse(std::string_view text);

/// Compact JSON text of a value, maps in their order. Bytes are written as Base64 text. Nothing when the value holds
/// an object of the program, a real that is not finite, or a text that is not UTF-8, which JSON cannot say.
std::optional<std::string> write(const Value& value);

}  // namespace tarvo::platform::json

namespace tarvo {
namespace json = platform::json;
}
