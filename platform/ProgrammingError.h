#pragma once

#include <functional>
#include <string_view>

namespace tarvo::platform {

/// Receives the report of a contract that a caller broke. The default handler logs the text and, in builds with
/// assertions, aborts; in other builds the program goes on in the way that the reporting operation documents. Tests
/// install their own.
using ProgrammingErrorHandler = std::function<void(std::string_view what)>;

/// Replaces the handler; an empty one restores the default. Returns the former handler.
ProgrammingErrorHandler setProgrammingErrorHandler(ProgrammingErrorHandler handler);
void reportProgrammingError(std::string_view what);

}  // namespace tarvo::platform
