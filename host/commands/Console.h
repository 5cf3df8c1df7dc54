#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The output for people.
namespace tarvo::host {

/// Writes one line to standard error and returns the exit status.
int fail(std::string_view why, int status = 1);
/// Writes one line to standard error beside an answer that is printed all the same.
void note(std::string_view what);

/// Writes a line of the log to standard error.
void writeLogLine(std::string_view line);

/// Replaces the characters of lines of text that could steer the terminal or change the direction of writing. Line
/// feeds stay.
std::string harmlessLines(std::string_view text);
/// Escapes such characters in JSON, whose meaning stays the same.
std::string harmlessJson(std::string_view json);

/// Sets texts in columns of equal width, with two blanks between; the first row is the heading. Control characters,
/// which could steer the terminal, become blanks.
std::string tableText(const std::vector<std::vector<std::string>>& rows);

}  // namespace tarvo::host
