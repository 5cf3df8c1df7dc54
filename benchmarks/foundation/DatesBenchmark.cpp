#include <benchmark/benchmark.h>
#include <unicode/smpdtfmt.h>

#include <chrono>
#include <string>
#include <vector>

#include "platform/Clock.h"
#include "platform/dates/Dates.h"

namespace tarvo {
namespace {

// Returns a thousand moments between 2015 and 2025.
std::int64_t momentAt(std::int64_t i) { return 1'420'070'400 + i * 315'577; }

std::vector<std::string> texts(std::string_view pattern) {
    auto formatter = DateFormatter::pattern(std::string(pattern), {.locale = "en_US", .timeZone = "Europe/Berlin"});
    std::vector<std::string> texts;
    for (std::int64_t i = 0; i < 1000; ++i) texts.push_back(*formatter.string(momentAt(i)));
    return texts;
}

template <class Read>
void readAll(benchmark::State& state, std::string_view pattern, Read&& read) {
    platform::Clock::setTimeZone("Europe/Berlin");
    auto all = texts(pattern);
    for (auto _ : state)
        for (auto& text : all) benchmark::DoNotOptimize(read(text));
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * all.size()));
    platform::Clock::setTimeZone(std::nullopt);
}

icu::SimpleDateFormat byIcu(std::string_view pattern) {
    UErrorCode status = U_ZERO_ERROR;
    icu::StringPiece piece(pattern.data(), static_cast<int32_t>(pattern.size()));
    icu::SimpleDateFormat format(icu::UnicodeString::fromUTF8(piece), icu::Locale("en_US_POSIX"), status);
    format.setLenient(false);
    format.adoptTimeZone(icu::TimeZone::createTimeZone("Europe/Berlin"));
    return format;
}

// The floor adds up the digits without checks, which no correct reader can beat.
std::int64_t bareLoop(std::string_view text) {
    auto number = [&](std::size_t at, int count) {
        int value = 0;
        for (int i = 0; i < count; ++i) value = value * 10 + (text[at + static_cast<std::size_t>(i)] - '0');
        return value;
    };
    std::chrono::sys_days day(std::chrono::year(number(0, 4)) / number(5, 2) / number(8, 2));
    std::int64_t seconds = day.time_since_epoch().count() * 86400;
    if (text.size() == 10) return seconds - 3600;
    seconds += number(11, 2) * 3600 + number(14, 2) * 60 + number(17, 2);
    return text[19] == 'Z' ? seconds
                           : seconds - (number(20, 2) * 3600 + number(23, 2) * 60) * (text[19] == '-' ? -1 : 1);
}

void dateTimeFloor(benchmark::State& state) { readAll(state, DateFormatter::iso8601Pattern, bareLoop); }
void dateFloor(benchmark::State& state) { readAll(state, DateFormatter::dateOnlyPattern, bareLoop); }

void read(benchmark::State& state, std::string_view pattern) {
    auto formatter = DateFormatter::pattern(std::string(pattern));
    readAll(state, pattern, [&](const std::string& text) { return formatter.date(text); });
}
void dateTime(benchmark::State& state) { read(state, DateFormatter::iso8601Pattern); }
void date(benchmark::State& state) { read(state, DateFormatter::dateOnlyPattern); }

void readByIcu(benchmark::State& state, std::string_view pattern) {
    auto format = byIcu(pattern);
    readAll(state, pattern, [&](const std::string& text) {
        icu::ParsePosition position;
        return format.parse(icu::UnicodeString::fromUTF8(text), position);
    });
}
void dateTimeByIcu(benchmark::State& state) { readByIcu(state, DateFormatter::iso8601Pattern); }
void dateByIcu(benchmark::State& state) { readByIcu(state, DateFormatter::dateOnlyPattern); }

void writeDateTime(benchmark::State& state) {
    auto formatter = DateFormatter::pattern(std::string(DateFormatter::iso8601Pattern), {.timeZone = "Europe/Berlin"});
    std::int64_t i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(formatter.string(momentAt(i++ % 1000)));
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}
void writeDateTimeByIcu(benchmark::State& state) {
    auto format = byIcu(DateFormatter::iso8601Pattern);
    std::int64_t i = 0;
    for (auto _ : state) {
        icu::UnicodeString text;
        std::string utf8;
        format.format(static_cast<double>(momentAt(i++ % 1000)) * 1000, text).toUTF8String(utf8);
        benchmark::DoNotOptimize(utf8);
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

BENCHMARK(dateTimeFloor)->Name("dates/read_date_time/floor");
BENCHMARK(dateTime)->Name("dates/read_date_time/ours");
BENCHMARK(dateTimeByIcu)->Name("dates/read_date_time/icu");
BENCHMARK(dateFloor)->Name("dates/read_date/floor");
BENCHMARK(date)->Name("dates/read_date/ours");
BENCHMARK(dateByIcu)->Name("dates/read_date/icu");
BENCHMARK(writeDateTime)->Name("dates/write_date_time/ours");
BENCHMARK(writeDateTimeByIcu)->Name("dates/write_date_time/icu");

}  // namespace
}  // namespace tarvo
