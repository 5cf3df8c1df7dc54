#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tarvo::platform {

enum class LogLevel {
    /// What the program does while all goes well.
    progress,
    /// Something was left out, refused or failed, and the program goes on.
    warning,
    /// A caller broke a contract, or the program cannot go on.
    error
};

/// One line of the log. The views are valid during the call of the sink only.
struct LogLine {
    LogLevel level;
    /// The area of the program that the line is about, such as "settings" or "network"; empty if it names none.
    std::string_view subject;
    /// Without a line feed.
    std::string_view text;

    /// For sinks that only want the text.
    operator std::string_view() const { return text; }
};

/// Receives each line. Called on whichever thread logs, one call at a time.
using LogSink = std::function<void(const LogLine& line)>;

/// Writes one line. Secrets (tokens, passphrases) and values of records never go in: name kinds and counts.
void log(LogLevel level, std::string_view subject, std::string_view text);

/// Replaces the sink; an empty one restores the default, which writes the texts to standard error. Returns the former
/// sink.
LogSink setLogSink(LogSink sink);

/// Lines below this level never reach the sink, so that a host can keep warnings and silence progress. `progress`,
/// which lets every line through, until it is set. Returns the former level.
LogLevel setLogLevel(LogLevel least);

}  // namespace tarvo::platform
