#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/Data.h"
#include "platform/Result.h"
#include "tarvobase/network_layer/TypedReads.h"

namespace tarvo {

/// The header of an answer part of the older form: "error" 0 for data, 1 for a refusal.
struct OldResponseInfo {
    std::uint64_t servertime = 0;
    std::int64_t error = 0;
};

/// A part of the older form that failed: the server's code and words, or `noData` for what is neither data nor refusal.
struct OldResultError {
    enum class Case { serverError, noData } which = Case::noData;
    std::int64_t code = 0;
    std::string message;
    friend bool operator==(const OldResultError&, const OldResultError&) = default;
};

/// The older form of an answer: "response" is a list of pairs of a header and a body.
template <class T>
struct OldResponse {
    OldResponseInfo responseInfo;
    Result<T, OldResultError> result;
};

using OldResponsePart = OldResponse<ValueList>;

/// All parts in their order, each a success with its data list or a failure. A body that has no such list is
/// `jsonSerializationFailed`, `keyNotFound("response")` or `typeConversionFailedForKey("response")`.
Result<std::vector<OldResponsePart>, ParserError> parseOldResponse(const platform::Data& data);

}  // namespace tarvo
