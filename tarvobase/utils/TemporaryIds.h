#pragma once

#include <algorithm>
#include <string_view>

/// The two forms of the id that a record has until the server gives it one. Neither test accepts the other form.
namespace tarvo {

/// The prefix of ids that the host or the legacy queue makes; a number or a UUID follows.
inline constexpr std::string_view tempIDPrefix = "TarvoTEMPID#";

inline bool isTempId(std::string_view id) { return id.starts_with(tempIDPrefix); }

/// Returns whether the id is "NEW_" and exactly nine digits, the form of the current queue of changes.
inline bool isNewRecordId(std::string_view id) {
    constexpr std::string_view prefix = "NEW_";
    constexpr std::size_t digits = 9;
    auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return id.size() == prefix.size() + digits && id.starts_with(prefix) &&
           std::all_of(id.begin() + prefix.size(), id.end(), isDigit);
}

/// Returns whether an id is a temporary one, in either form.
inline bool isTemporaryRecordId(std::string_view id) { return isTempId(id) || isNewRecordId(id); }

}  // namespace tarvo
