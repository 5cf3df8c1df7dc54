#pragma once

#include <cstdint>
#include <string_view>

#include "platform/Value.h"

/// The fixed forms around the content of an answer. Times are milliseconds of the server's clock.
namespace tarvo::sandbox::envelope {

/// One entry of the result list. An empty list of rows is marked with "nodata".
Value entry(std::string_view module, ValueList rows, std::int64_t now);
/// The same with further members in its "info".
Value entry(std::string_view module, ValueList rows, std::int64_t now, const ValueMap& moreInfo);
/// An entry that failed while its siblings stand.
Value failedEntry(std::string_view module, std::string_view code, std::string_view message, std::int64_t now);

/// {"response":{"result":[...],"responseInfo":{...}}}
Value answer(ValueList entries, std::int64_t now);
/// {"error":[{"code":...,"message":...}]}: the whole request failed.
Value failure(std::string_view code, std::string_view message);

/// The older form that a few calls keep: "response" is a list of pairs of times and content.
Value olderAnswer(ValueList rows, std::int64_t now);
Value olderFailure(std::int64_t code, std::string_view message, std::int64_t now);

}  // namespace tarvo::sandbox::envelope
