#include "platform/dates/Dates.h"

#include <unicode/datefmt.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <chrono>
#include <cstdlib>
#include <vector>

#include "platform/Clock.h"
#include "platform/ThreadSafety.h"
#include "platform/dates/LocalZone.h"
#include "platform/dates/WireDates.h"

namespace tarvo::platform {

namespace {

using Style = DateFormatter::Style;

enum class Wire { none, dateTime, date };

/// The calendar's own bounds lie a little further out.
constexpr std::int64_t farthestMoment = 183'000'000'000'000;

icu::DateFormat::EStyle icuStyle(Style style) {
    switch (style) {
        case Style::none:
            return icu::DateFormat::kNone;
        case Style::short_:
            return icu::DateFormat::kShort;
        case Style::medium:
            return icu::DateFormat::kMedium;
        case Style::long_:
            return icu::DateFormat::kLong;
        case Style::full:
            return icu::DateFormat::kFull;
    }
    return icu::DateFormat::kNone;
}

icu::DateFormat::EStyle relativeStyle(Style style) {
    return static_cast<icu::DateFormat::EStyle>(icuStyle(style) | icu::DateFormat::kRelative);
}

std::string utf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

/// ICU changes to the Julian calendar before October 1582. The wire's dates do not, so no formatter does: a date is
/// written by the calendar that it was read by, and the ten days that ICU leaves out exist.
void useGregorianCalendarAlways(icu::DateFormat& format) {
    auto calendar = dynamic_cast<const icu::GregorianCalendar*>(format.getCalendar());
    if (!calendar) return;
    std::unique_ptr<icu::GregorianCalendar> gregorian(calendar->clone());
    UErrorCode status = U_ZERO_ERROR;
    gregorian->setGregorianChange(-static_cast<double>(farthestMoment) * 1000, status);
    if (U_SUCCESS(status)) format.adoptCalendar(gregorian.release());
}

icu::TimeZone* icuZone(const LocalZone& zone) {
    return icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zone.name()));
}

std::int64_t floorDay(double milliseconds, const LocalZone& zone) {
    auto seconds = std::chrono::floor<std::chrono::seconds>(std::chrono::duration<double, std::milli>(milliseconds));
    std::chrono::seconds local(seconds.count() + zone.offsetAt(seconds.count()));
    return std::chrono::floor<std::chrono::days>(local).count();
}

}  // namespace

/// Formatters of ICU are for one thread at a time; each use takes one from the idle ones, or a new one made from the
/// recipe, and gives it back.
class DateFormatter::Implementation {
public:
    Implementation(std::string pattern, Options options) : pattern_(std::move(pattern)), options_(std::move(options)) {
        bool plainEnglish = !options_.locale || options_.locale == "en_US" || options_.locale == "en_US_POSIX";
        if (plainEnglish && pattern_ == iso8601Pattern) wire_ = Wire::dateTime;
        if (plainEnglish && pattern_ == dateOnlyPattern) wire_ = Wire::date;
        keepZone();
    }
    Implementation(Style date, Style time, Options options) : date_(date), time_(time), options_(std::move(options)) {
        keepZone();
    }

    std::optional<std::string> string(std::int64_t moment) const;
    std::optional<std::int64_t> date(std::string_view text) const;
    std::string pattern() const;

private:
    struct Machine {
        std::unique_ptr<icu::DateFormat> plain;
        std::unique_ptr<icu::DateFormat> relative;
        std::shared_ptr<const LocalZone> zone;
    };
    /// A machine for the length of one use.
    class Borrowed {
    public:
        explicit Borrowed(const Implementation& owner) : owner_(owner), machine_(owner.take()) {}
        ~Borrowed() { owner_.giveBack(std::move(machine_)); }
        Borrowed(const Borrowed&) = delete;
        Borrowed& operator=(const Borrowed&) = delete;
        Machine* operator->() const { return machine_.get(); }

    private:
        const Implementation& owner_;
        std::unique_ptr<Machine> machine_;
    };

    void keepZone() {
        if (options_.timeZone) zone_ = LocalZone::named(*options_.timeZone);
    }
    const std::shared_ptr<const LocalZone>& zone() const { return zone_ ? zone_ : LocalZone::inForce(); }
    icu::Locale locale() const;
    bool isRelative() const { return !pattern_ && options_.relative && date_ != Style::none; }
    std::unique_ptr<icu::DateFormat> makePlain() const;
    std::unique_ptr<Machine> take() const;
    void giveBack(std::unique_ptr<Machine> machine) const;
    std::optional<std::string> wireString(std::int64_t moment) const;
    std::optional<std::int64_t> wireDate(std::string_view text) const;
    std::optional<icu::UnicodeString> relativeWords(const Machine& machine, double milliseconds) const;

    std::optional<std::string> pattern_;
    Style date_ = Style::none, time_ = Style::none;
    Options options_;
    Wire wire_ = Wire::none;
    std::shared_ptr<const LocalZone> zone_;  // null: the one in force
    mutable Mutex mutex_;
    mutable std::vector<std::unique_ptr<Machine>> idle_ TARVO_GUARDED_BY(mutex_);
};

// The server's calendar and digits are those of the wire, whatever the user's are.
icu::Locale DateFormatter::Implementation::locale() const {
    if (wire_ != Wire::none) return icu::Locale("en_US_POSIX");
    return options_.locale ? icu::Locale(options_.locale->c_str()) : icu::Locale::getDefault();
}

std::unique_ptr<icu::DateFormat> DateFormatter::Implementation::makePlain() const {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::DateFormat> format;
    if (pattern_ || (date_ == Style::none && time_ == Style::none))
        format = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString::fromUTF8(pattern_.value_or("")), locale(),
                                                         status);
    else
        format.reset(icu::DateFormat::createDateTimeInstance(icuStyle(date_), icuStyle(time_), locale()));
    if (U_FAILURE(status) || !format) return nullptr;
    format->setLenient(false);
    useGregorianCalendarAlways(*format);
    return format;
}

std::unique_ptr<DateFormatter::Implementation::Machine> DateFormatter::Implementation::take() const {
    std::unique_ptr<Machine> machine;
    {
        MutexLock lock(mutex_);
        if (!idle_.empty()) {
            machine = std::move(idle_.back());
            idle_.pop_back();
        }
    }
    if (!machine) {
        machine = std::make_unique<Machine>();
        machine->plain = makePlain();
        if (isRelative())
            machine->relative.reset(
                icu::DateFormat::createDateTimeInstance(relativeStyle(date_), icuStyle(time_), locale()));
    }
    if (auto& now = zone(); machine->zone != now) {
        machine->zone = now;
        if (machine->plain) machine->plain->adoptTimeZone(icuZone(*now));
        if (machine->relative) machine->relative->adoptTimeZone(icuZone(*now));
    }
    return machine;
}

void DateFormatter::Implementation::giveBack(std::unique_ptr<Machine> machine) const {
    MutexLock lock(mutex_);
    idle_.push_back(std::move(machine));
}

std::optional<std::string> DateFormatter::Implementation::wireString(std::int64_t moment) const {
    switch (wire_) {
        case Wire::dateTime:
            return wire::writeDateTime(moment, *zone());
        case Wire::date:
            return wire::writeDate(moment, *zone());
        case Wire::none:
            return std::nullopt;
    }
    return std::nullopt;
}

std::optional<std::int64_t> DateFormatter::Implementation::wireDate(std::string_view text) const {
    switch (wire_) {
        case Wire::dateTime:
            return wire::readDateTime(text);
        case Wire::date:
            return wire::readDate(text, *zone());
        case Wire::none:
            return std::nullopt;
    }
    return std::nullopt;
}

// ICU compares with its own clock. So the moment is shown as far from ICU's today as it is from the Clock's; the words
// are taken when there are some for that distance, which shows in that the plain text differs.
std::optional<icu::UnicodeString> DateFormatter::Implementation::relativeWords(const Machine& machine,
                                                                               double milliseconds) const {
    constexpr std::int64_t farthestWord = 3;  // days; no locale has words beyond
    auto clockNow = static_cast<double>(Clock::now().time_since_epoch().count());
    auto& zone = *machine.zone;
    auto today = floorDay(clockNow, zone);
    auto day = floorDay(milliseconds, zone);
    if (!machine.relative || std::abs(day - today) > farthestWord) return std::nullopt;
    auto shift = floorDay(icu::Calendar::getNow(), zone) - today;
    auto onOtherDay = [&](std::int64_t other) {
        // Moved by whole local days, so that the time of day stays over a change of the clocks.
        auto moved = milliseconds + static_cast<double>(other) * 86'400'000;
        return moved + (zone.offsetAt(static_cast<std::int64_t>(milliseconds / 1000)) -
                        zone.offsetAt(static_cast<std::int64_t>(moved / 1000))) *
                           1000.0;
    };
    auto shifted = onOtherDay(shift);
    icu::UnicodeString words, plain;
    machine.relative->format(shifted, words);
    machine.plain->format(shifted, plain);
    return words == plain ? std::nullopt : std::optional(words);
}

std::optional<std::string> DateFormatter::Implementation::string(std::int64_t moment) const {
    if (auto quick = wireString(moment)) return quick;
    if (moment > farthestMoment || moment < -farthestMoment) return std::nullopt;
    Borrowed machine(*this);
    if (!machine->plain) return std::nullopt;
    auto milliseconds = static_cast<double>(moment) * 1000;
    if (auto words = relativeWords(*machine.operator->(), milliseconds)) return utf8(*words);
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString text;
    machine->plain->format(milliseconds, text, nullptr, status);
    return U_SUCCESS(status) ? std::optional(utf8(text)) : std::nullopt;
}

std::optional<std::int64_t> DateFormatter::Implementation::date(std::string_view text) const {
    if (auto quick = wireDate(text)) return quick;
    Borrowed machine(*this);
    if (!machine->plain) return std::nullopt;
    auto whole = icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    icu::ParsePosition position;
    auto milliseconds = machine->plain->parse(whole, position);
    if (position.getIndex() == 0 || position.getIndex() != whole.length()) return std::nullopt;
    return static_cast<std::int64_t>(milliseconds / 1000);
}

std::string DateFormatter::Implementation::pattern() const {
    if (pattern_) return *pattern_;
    Borrowed machine(*this);
    auto simple = dynamic_cast<icu::SimpleDateFormat*>(machine->plain.get());
    icu::UnicodeString pattern;
    return simple ? utf8(simple->toPattern(pattern)) : std::string();
}

DateFormatter DateFormatter::pattern(std::string pattern, Options options) {
    return DateFormatter(std::make_shared<Implementation>(std::move(pattern), std::move(options)));
}

DateFormatter DateFormatter::styles(Style date, Style time, Options options) {
    return DateFormatter(std::make_shared<Implementation>(date, time, std::move(options)));
}

std::optional<std::string> DateFormatter::string(std::int64_t secondsSince1970) const {
    return implementation_->string(secondsSince1970);
}

std::optional<std::int64_t> DateFormatter::date(std::string_view text) const { return implementation_->date(text); }

std::string DateFormatter::pattern() const { return implementation_->pattern(); }

std::int64_t secondsFromGmt(std::int64_t secondsSince1970, const std::optional<std::string>& timeZone) {
    if (timeZone) return LocalZone::named(*timeZone)->offsetAt(secondsSince1970);
    return LocalZone::inForce()->offsetAt(secondsSince1970);
}

}  // namespace tarvo::platform
