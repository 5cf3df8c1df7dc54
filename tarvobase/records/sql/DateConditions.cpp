#include "tarvobase/records/sql/DateConditions.h"

#include "platform/Text.h"
#include "platform/dates/Dates.h"
#include "tarvobase/utils/Util.h"

namespace tarvo {

namespace {

// Enough for any list, and small enough that no computed date leaves SQLite's calendar.
constexpr std::int64_t maxUnits = 100000;

/// Writes conditions on the local time of a column. Spans include their first moment and exclude their end.
class Span {
public:
    explicit Span(const std::string& column) : column_("datetime(" + column + ", 'unixepoch', 'localtime')") {}

    std::string from(const std::string& moment) const { return column_ + " >= " + moment; }
    std::string before(const std::string& moment) const { return column_ + " < " + moment; }
    std::string between(const std::string& first, const std::string& end) const {
        return from(first) + " AND " + before(end);
    }

private:
    std::string column_;
};

std::string now(const std::string& modifiers) { return "datetime('now', 'localtime', " + modifiers + ")"; }
std::string startOfDay(const std::string& days = "") {
    return now("'start of day'" + (days.empty() ? "" : ", '" + days + " days'"));
}
std::string startOfMonth(const std::string& months = "") {
    return now("'start of month'" + (months.empty() ? "" : ", '" + months + " months'"));
}
std::string startOfYear(const std::string& years = "") {
    return now("'start of year'" + (years.empty() ? "" : ", '" + years + " years'"));
}
std::string moment(std::int64_t seconds, const std::string& modifiers = "") {
    return "datetime(" + std::to_string(seconds) + ", 'unixepoch', 'localtime'" + modifiers + ")";
}
std::string dayOf(std::int64_t seconds) { return moment(seconds, ", 'start of day'"); }
std::string dayAfter(std::int64_t seconds) { return moment(seconds, ", 'start of day', '+1 days'"); }

std::string signedText(std::int64_t number) { return (number < 0 ? "" : "+") + std::to_string(number); }

/// Reads "2026-05-31 12:00:00 +0000", the form of filters that the library makes, and "2026-05-31T12:00:00Z".
std::optional<std::int64_t> secondsAt(const std::vector<std::string>& inputs, std::size_t index) {
    static const auto formatter = DateFormatter::pattern("yyyy-MM-dd HH:mm:ss Z", {.locale = "en_US_POSIX"});
    if (index >= inputs.size()) return std::nullopt;
    auto seconds = formatter.date(inputs[index]);
    return seconds ? seconds : Util::DateFormatters::iso8601DateFormatter().date(inputs[index]);
}

struct Units {
    std::int64_t count;
    std::string_view unit;
};

std::optional<Units> unitsOf(const std::vector<std::string>& inputs) {
    if (inputs.size() < 2) return std::nullopt;
    auto count = text::toInteger(inputs[0]);
    if (!count || *count < 0 || *count > maxUnits) return std::nullopt;
    for (auto unit : {filter_unit::days, filter_unit::weeks, filter_unit::months})
        if (inputs[1] == unit) return Units{*count, unit};
    return std::nullopt;
}

std::string inTheLast(const Span& span, Units units) {
    if (units.unit == filter_unit::months)
        return span.between(startOfMonth(signedText(-units.count)), startOfMonth("+1"));
    if (units.unit == filter_unit::days) return span.between(startOfDay(signedText(-units.count)), startOfDay("+1"));
    auto days = signedText(-units.count * 7);
    return span.between(now("'start of day', '" + days + " days', 'weekday 0'"), startOfDay("+1"));
}

std::string dueIn(const Span& span, Units units) {
    if (units.unit == filter_unit::months)
        return span.between(startOfMonth(), startOfMonth(signedText(units.count + 1)));
    auto days = units.unit == filter_unit::weeks ? units.count * 7 : units.count;
    return span.between(startOfDay(), startOfDay(signedText(days + 1)));
}

template <class Write>
std::optional<std::string> withUnits(const std::vector<std::string>& inputs, Write&& write) {
    auto units = unitsOf(inputs);
    return units ? std::optional<std::string>(write(*units)) : std::nullopt;
}
template <class Write>
std::optional<std::string> withDate(const std::vector<std::string>& inputs, Write&& write) {
    auto seconds = secondsAt(inputs, 0);
    return seconds ? std::optional<std::string>(write(*seconds)) : std::nullopt;
}
template <class Write>
std::optional<std::string> withDates(const std::vector<std::string>& inputs, Write&& write) {
    auto first = secondsAt(inputs, 0), last = secondsAt(inputs, 1);
    return first && last ? std::optional<std::string>(write(*first, *last)) : std::nullopt;
}

}  // namespace

std::optional<std::string> dateCondition(const std::string& column, DateFilterTypes type,
                                         const std::vector<std::string>& inputs) {
    using D = DateFilterTypes;
    Span span(column);
    switch (type) {
        case D::inTheLast:
            return withUnits(inputs, [&](Units units) { return inTheLast(span, units); });
        case D::dueIn:
            return withUnits(inputs, [&](Units units) { return dueIn(span, units); });
        case D::on:
            return withDate(inputs, [&](auto day) { return span.between(dayOf(day), dayAfter(day)); });
        case D::before:
            return withDate(inputs, [&](auto day) { return span.before(dayOf(day)); });
        case D::after:
            return withDate(inputs, [&](auto day) { return span.from(dayAfter(day)); });
        case D::between:
            return withDates(inputs, [&](auto first, auto last) { return span.between(dayOf(first), dayAfter(last)); });
        case D::today:
            return span.between(startOfDay(), startOfDay("+1"));
        case D::yesterday:
            return span.between(startOfDay("-1"), startOfDay());
        // Weeks begin at the current time of day, as the server's weeks do.
        case D::thisWeek:
            return span.between(now("'-6 days', 'weekday 0'"), now("'weekday 6'"));
        case D::lastWeek:
            return span.between(now("'-13 days', 'weekday 0'"), now("'-7 days', 'weekday 6'"));
        case D::thisMonth:
            return span.between(startOfMonth(), startOfMonth("+1"));
        case D::lastMonth:
            return span.between(startOfMonth("-1"), startOfMonth());
        case D::thisYear:
            return span.between(startOfYear(), startOfYear("+1"));
    }
    return std::nullopt;
}

std::optional<std::string> dateCondition(const std::string& column, DateTimeFilterTypes type,
                                         const std::vector<std::string>& inputs) {
    using D = DateTimeFilterTypes;
    Span span(column);
    switch (type) {
        case D::before:
            return withDate(inputs, [&](auto second) { return span.before(moment(second)); });
        case D::after:
            return withDate(inputs, [&](auto second) { return span.from(moment(second)); });
        case D::between:
            return withDates(inputs, [&](auto first, auto last) { return span.between(moment(first), moment(last)); });
    }
    return std::nullopt;
}

}  // namespace tarvo
