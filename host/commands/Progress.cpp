#include "host/commands/Progress.h"

#include <unistd.h>
#include <algorithm>

#include "host/commands/CommandSteps.h"
#include "platform/Json.h"

namespace tarvo::host {

namespace {

constexpr std::size_t barWidth = 30;

std::string barText(int percent, const std::string& step, std::int64_t records) {
    auto filled = barWidth * static_cast<std::size_t>(std::clamp(percent, 0, 100)) / 100;
    auto number = std::to_string(percent);
    return "[" + std::string(filled, '#') + std::string(barWidth - filled, '.') + "] " +
           std::string(number.size() < 3 ? 3 - number.size() : 0, ' ') + number + "%  " + step + "  " +
           grouped(records) + " records";
}

}  // namespace

Progress::Form Progress::formFor(bool json) {
    if (json) return Form::json;
    return ::isatty(STDOUT_FILENO) ? Form::bar : Form::lines;
}

void Progress::show(double percent, const std::string& step, std::int64_t records) {
    auto whole = static_cast<int>(percent);
    if (whole == shownPercent_ && (form_ != Form::bar || step == shownStep_)) return;
    shownPercent_ = whole;
    shownStep_ = step;
    switch (form_) {
        case Form::bar:
            // Clears the rest of the former line.
            print("\r" + barText(whole, step, records) + "\x1b[K");
            isBarOpen_ = true;
            break;
        case Form::lines:
            print(std::to_string(whole) + "% " + step + ", " + std::to_string(records) + " records\n");
            break;
        case Form::json:
            print(json::write(ValueMap{{"percent", whole}, {"step", step}, {"records", records}}).value_or("") + "\n");
            break;
    }
}

void Progress::end() {
    if (isBarOpen_) print("\n");
    isBarOpen_ = false;
}

std::string grouped(std::int64_t number) {
    auto text = std::to_string(number);
    for (auto at = static_cast<std::ptrdiff_t>(text.size()) - 3; at > (number < 0 ? 1 : 0); at -= 3)
        text.insert(static_cast<std::size_t>(at), ",");
    return text;
}

}  // namespace tarvo::host
