#pragma once

#include <string>
#include <string_view>
#include <vector>

/// What the program says to people.
namespace tarvo::host {

/// One line on standard error. Gives the exit status.
int fail(std::string_view why, int status = 1);
/// One line on standard error beside an answer that is given all the same.
void note(std::string_view what);

/// Texts in columns of equal width, with two blanks between; the first row is the heading. Control characters, which
/// could steer the terminal, become blanks.
std::string tableText(const std::vector<std::vector<std::string>>& rows);

}  // namespace tarvo::host
