#include "platform/dates/WireDates.h"

#include <chrono>
#include <cstdlib>

namespace tarvo::platform::wire {

namespace {

constexpr int firstYear = 1;
constexpr std::size_t dateSize = 10, timeSize = 9, offsetSize = 6;  // "2024-02-29", "T10:00:00", "+05:30"

// The number of two digits, or one above 99 for anything else.
unsigned twoDigits(const char* text) {
    auto tens = static_cast<unsigned>(text[0]) - '0', ones = static_cast<unsigned>(text[1]) - '0';
    return tens <= 9 && ones <= 9 ? tens * 10 + ones : 100;
}

// Days since 1970 of ten bytes.
std::optional<std::int64_t> readDay(const char* text) {
    auto century = twoDigits(text), year = twoDigits(text + 2), month = twoDigits(text + 5), day = twoDigits(text + 8);
    if (century > 99 || year > 99 || text[4] != '-' || text[7] != '-') return std::nullopt;
    std::chrono::year_month_day date(std::chrono::year(static_cast<int>(century * 100 + year)),
                                     std::chrono::month(month), std::chrono::day(day));
    if (!date.ok() || date.year() < std::chrono::year(firstYear)) return std::nullopt;
    return std::chrono::sys_days(date).time_since_epoch().count();
}

// Seconds of the day of nine bytes.
std::optional<std::int64_t> readTime(const char* text) {
    auto hour = twoDigits(text + 1), minute = twoDigits(text + 4), second = twoDigits(text + 7);
    if (text[0] != 'T' || text[3] != ':' || text[6] != ':' || hour > 23 || minute > 59 || second > 59)
        return std::nullopt;
    return hour * 3600 + minute * 60 + second;
}

// Seconds ahead of UTC of six bytes.
std::optional<std::int64_t> readOffset(const char* text) {
    auto hour = twoDigits(text + 1), minute = twoDigits(text + 4);
    if ((text[0] != '+' && text[0] != '-') || text[3] != ':' || hour > 23 || minute > 59) return std::nullopt;
    std::int64_t offset = hour * 3600 + minute * 60;
    return text[0] == '-' ? -offset : offset;
}

void writeTwoDigits(char* to, unsigned number) {
    to[0] = static_cast<char>('0' + number / 10);
    to[1] = static_cast<char>('0' + number % 10);
}

struct LocalTime {
    std::chrono::year_month_day date;
    unsigned secondOfDay;
    std::int32_t offset;
};

std::optional<LocalTime> localTime(std::int64_t secondsSince1970, const LocalZone& zone) {
    using namespace std::chrono;
    // Well inside the years of four digits, so that nothing below overflows.
    constexpr std::int64_t bound = 300'000'000'000;
    if (secondsSince1970 < -bound || secondsSince1970 > bound) return std::nullopt;
    auto offset = zone.offsetAt(secondsSince1970);
    sys_seconds local{seconds(secondsSince1970 + offset)};
    auto day = floor<days>(local);
    year_month_day date(day);
    if (date.year() < year(firstYear) || date.year() > year(9999)) return std::nullopt;
    return LocalTime{date, static_cast<unsigned>((local - day).count()), offset};
}

void writeDay(char* to, std::chrono::year_month_day date) {
    auto year = static_cast<unsigned>(static_cast<int>(date.year()));
    writeTwoDigits(to, year / 100);
    writeTwoDigits(to + 2, year % 100);
    to[4] = to[7] = '-';
    writeTwoDigits(to + 5, static_cast<unsigned>(date.month()));
    writeTwoDigits(to + 8, static_cast<unsigned>(date.day()));
}

void writeTime(char* to, unsigned secondOfDay) {
    to[0] = 'T';
    to[3] = to[6] = ':';
    writeTwoDigits(to + 1, secondOfDay / 3600);
    writeTwoDigits(to + 4, secondOfDay / 60 % 60);
    writeTwoDigits(to + 7, secondOfDay % 60);
}

void writeOffset(char* to, std::int32_t offset) {
    auto minutes = static_cast<unsigned>(std::abs(offset)) / 60;
    to[0] = offset < 0 ? '-' : '+';
    to[3] = ':';
    writeTwoDigits(to + 1, minutes / 60);
    writeTwoDigits(to + 4, minutes % 60);
}

}  // namespace

std::optional<std::int64_t> readDateTime(std::string_view text) {
    constexpr auto beforeZone = dateSize + timeSize;
    bool utc = text.size() == beforeZone + 1 && text[beforeZone] == 'Z';
    if (!utc && text.size() != beforeZone + offsetSize) return std::nullopt;
    auto day = readDay(text.data());
    auto time = readTime(text.data() + dateSize);
    auto offset = utc ? std::optional<std::int64_t>(0) : readOffset(text.data() + beforeZone);
    if (!day || !time || !offset) return std::nullopt;
    return *day * 86400 + *time - *offset;
}

std::optional<std::int64_t> readDate(std::string_view text, const LocalZone& zone) {
    if (text.size() != dateSize) return std::nullopt;
    auto day = readDay(text.data());
    return day ? zone.startOfDay(*day) : std::nullopt;
}

std::optional<std::string> writeDateTime(std::int64_t secondsSince1970, const LocalZone& zone) {
    auto local = localTime(secondsSince1970, zone);
    if (!local || local->offset % 60 != 0) return std::nullopt;
    char text[dateSize + timeSize + offsetSize];
    writeDay(text, local->date);
    writeTime(text + dateSize, local->secondOfDay);
    auto end = text + dateSize + timeSize;
    if (local->offset == 0) {
        *end = 'Z';
        return std::string(text, end + 1);
    }
    writeOffset(end, local->offset);
    return std::string(text, sizeof text);
}

std::optional<std::string> writeDate(std::int64_t secondsSince1970, const LocalZone& zone) {
    auto local = localTime(secondsSince1970, zone);
    if (!local) return std::nullopt;
    char text[dateSize];
    writeDay(text, local->date);
    return std::string(text, sizeof text);
}

}  // namespace tarvo::platform::wire
