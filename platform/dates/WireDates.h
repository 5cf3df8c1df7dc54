#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/dates/LocalZone.h"

/// The quick path of the two wire forms. It takes only the usual texts and moments and leaves all others to ICU by
/// returning nullopt: odd but readable texts, broken ones, years before 1 and after 9999, zones that are off by
/// seconds. Its results are those that ICU would return.
namespace tarvo::platform::wire {

/// "2024-02-29T10:00:00Z" or with "+05:30" at its end.
std::optional<std::int64_t> readDateTime(std::string_view text);
/// "2024-02-29", the first moment of the day in the zone.
std::optional<std::int64_t> readDate(std::string_view text, const LocalZone& zone);
std::optional<std::string> writeDateTime(std::int64_t secondsSince1970, const LocalZone& zone);
std::optional<std::string> writeDate(std::int64_t secondsSince1970, const LocalZone& zone);

}  // namespace tarvo::platform::wire
