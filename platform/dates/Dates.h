#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// Dates as texts. A moment is a number of whole seconds since 1970 in UTC, negative before.
namespace tarvo::platform {

/// A fixed way of writing and reading dates. Made once and kept: making one is costly, using it is not. A value, whose
/// copies share their insides; any thread may use any copy at any time.
///
/// Without a zone of its own a formatter follows `Clock::setTimeZone`; the system's zone is asked for once. Reading is
/// strict: the whole text must fit, and the day must exist. The Gregorian calendar holds for all times, also before
/// 1582.
class DateFormatter {
public:
    enum class Style { none, short_, medium, long_, full };

    struct Options {
        std::optional<std::string> locale = std::nullopt;    // "de_DE"; the user's when absent
        std::optional<std::string> timeZone = std::nullopt;  // "Europe/Berlin"; the one in force when absent
        /// With a date style: "today" and its kin in place of a date near `Clock::now()`, where the locale has words.
        bool relative = false;
    };

    /// By a pattern of Unicode's date fields ("d MMM yyyy"). The two wire forms below, without a locale, are always of
    /// the Gregorian calendar with ASCII digits, and have a quick path.
    static DateFormatter pattern(std::string pattern, Options options);
    static DateFormatter pattern(std::string pattern) { return DateFormatter::pattern(std::move(pattern), Options()); }
    /// In the locale's own way. `none` leaves the date or the time out.
    static DateFormatter styles(Style date, Style time, Options options);

    static constexpr std::string_view iso8601Pattern = "yyyy-MM-dd'T'HH:mm:ssZZZZZ";
    static constexpr std::string_view dateOnlyPattern = "yyyy-MM-dd";

    /// The text of a moment; nullopt if the pattern is not valid or the moment lies beyond the calendar (about five
    /// million years from now either way).
    std::optional<std::string> string(std::int64_t secondsSince1970) const;
    /// The moment that a text names, fractions of seconds cut off. A text without a time of day means midnight in the
    /// formatter's zone; `dateOnlyPattern` gives the first moment of the day where clocks skip midnight.
    std::optional<std::int64_t> date(std::string_view text) const;

    /// The pattern that it was made with, or the one that the locale gives for the styles.
    std::string pattern() const;

private:
    class Implementation;
    explicit DateFormatter(std::shared_ptr<const Implementation> implementation)
        : implementation_(std::move(implementation)) {}
    std::shared_ptr<const Implementation> implementation_;
};

/// Seconds that local time is ahead of UTC at a moment, in the zone or in the one in force. An unknown zone is UTC.
std::int64_t secondsFromGmt(std::int64_t secondsSince1970, const std::optional<std::string>& timeZone = std::nullopt);

}  // namespace tarvo::platform

namespace tarvo {
using platform::DateFormatter;
}
