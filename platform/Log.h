#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tarvo::platform {

/// Takes each progress line, without a line feed. Called on whatever thread logs, one call at a time.
using LogSink = std::function<void(std::string_view line)>;

/// Writes one progress line. Secrets (tokens, passphrases) and values of records never go in: name kinds and counts.
void log(std::string_view line);

/// Replaces the sink; an empty one restores the default, which writes to standard error. Returns the former sink.
LogSink setLogSink(LogSink sink);

}  // namespace tarvo::platform
