#pragma once

#include <cstdint>
#include <string>

namespace tarvo::host {

/// Shows how far a download is, on standard output: a bar that moves on a terminal, otherwise a line for each change of
/// the whole percentage, so that scripts can follow.
class Progress {
public:
    enum class Form { bar, lines, json };
    /// Returns the form that suits standard output.
    static Form formFor(bool json);

    explicit Progress(Form form) : form_(form) {}
    /// Shows the percentage, the step that reported last and how many records are stored.
    void show(double percent, const std::string& step, std::int64_t records);
    /// Ends the line of the bar.
    void end();

private:
    const Form form_;
    int shownPercent_ = -1;
    std::string shownStep_;
    bool isBarOpen_ = false;
};

/// Writes a number with separators, "1,234,567".
std::string grouped(std::int64_t number);

}  // namespace tarvo::host
