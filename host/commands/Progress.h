#pragma once

#include <cstdint>
#include <string>

namespace tarvo::host {

/// Shows how far a download is, on standard output: a bar that moves on a terminal, otherwise a line for each change of
/// the whole percentage, so that scripts can follow.
class Progress {
public:
    enum class Form { bar, lines, json };
    /// The form that suits standard output.
    static Form formFor(bool json);

    explicit Progress(Form form) : form_(form) {}
    /// `step` is the one that reported last, `records` how many are stored.
    void show(double percent, const std::string& step, std::int64_t records);
    /// Leaves the bar behind on a line of its own.
    void end();

private:
    const Form form_;
    int shownPercent_ = -1;
    std::string shownStep_;
    bool isBarOpen_ = false;
};

/// "1,234,567".
std::string grouped(std::int64_t number);

}  // namespace tarvo::host
