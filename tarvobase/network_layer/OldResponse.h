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

/// The header of a part of an answer in the older form. "error" is 0 for data and 1 for a refusal.
struct OldResponseInfo {
    std::uint64_t servertime = 0;
    std::int64_t error = 0;
};

/// The failure of a part in the older form: the server's code and message, or `noData` for a part that is neither data
/// nor a refusal.
struct OldResultError {
    enum class Case { serverError, noData } which = Case::noData;
    std::int64_t code = 0;
    std::string message;
    friend bool operator==(const OldResultError&, const OldResultError&) = default;
};

/// A part of an answer in the older form, whose "response" is a list of pairs of a header and a body.
template <class T>
struct OldResponse {
    OldResponseInfo responseInfo;
    Result<T, OldResultError> result;
};

using OldResponsePart = OldResponse<ValueList>;

/// Returns all parts in their order, each of them a success with its list of data or a failure. A body without a list
/// of parts fails with `jsonSerializationFailed`, `keyNotFound("response")` or
/// `typeConversionFailedForKey("response")`.
Result<std::vector<OldResponsePart>, ParserError> parseOldResponse(const platform::Data& data);

}  // namespace tarvo
