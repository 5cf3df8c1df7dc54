#include "platform/dates/Dates.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <limits>
#include <random>
#include <thread>
#include <tuple>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "tests/support/OnThreads.h"

namespace tarvo::platform {
namespace {

using Style = DateFormatter::Style;

/// ICU in strict mode, with the Gregorian calendar at all times.
class Reference {
public:
    Reference(std::string_view pattern, const char* zone) {
        UErrorCode status = U_ZERO_ERROR;
        format_ = std::make_unique<icu::SimpleDateFormat>(
            icu::UnicodeString::fromUTF8(icu::StringPiece(pattern.data(), static_cast<int32_t>(pattern.size()))),
            icu::Locale("en_US_POSIX"), status);
        EXPECT_TRUE(U_SUCCESS(status));
        format_->setLenient(false);
        std::unique_ptr<icu::GregorianCalendar> calendar(
            dynamic_cast<const icu::GregorianCalendar&>(*format_->getCalendar()).clone());
        calendar->setGregorianChange(-1e17, status);
        format_->adoptCalendar(calendar.release());
        format_->adoptTimeZone(icu::TimeZone::createTimeZone(zone));
    }
    std::optional<std::int64_t> date(const std::string& text) const {
        auto whole = icu::UnicodeString::fromUTF8(text);
        icu::ParsePosition position;
        auto moment = format_->parse(whole, position);
        if (position.getIndex() == 0 || position.getIndex() != whole.length()) return std::nullopt;
        return static_cast<std::int64_t>(moment / 1000);
    }
    std::string string(std::int64_t moment) const {
        icu::UnicodeString text;
        std::string out;
        return format_->format(static_cast<double>(moment) * 1000, text).toUTF8String(out);
    }

private:
    std::unique_ptr<icu::SimpleDateFormat> format_;
};

class DatesTests : public testing::Test {
protected:
    DatesTests() { Clock::setTimeZone("Europe/Berlin"); }
    ~DatesTests() override {
        Clock::setTimeZone(std::nullopt);
        Clock::release();
    }
    DateFormatter dateTime_ = DateFormatter::pattern(std::string(DateFormatter::iso8601Pattern));
    DateFormatter dateOnly_ = DateFormatter::pattern(std::string(DateFormatter::dateOnlyPattern));
};

TEST_F(DatesTests, DateOnlyIsMidnightInTheZoneInForce) {
    const std::tuple<const char*, const char*, std::optional<std::int64_t>> cases[] = {
        {"Europe/Berlin", "2024-02-29", 1709161200},
        {"Europe/Berlin", "2024-1-5", std::nullopt},
        {"Europe/Berlin", "2023-02-29", std::nullopt},
        {"Europe/Berlin", "2024-02-29x", std::nullopt},
        // Clocks skipped midnight: the day began at one.
        {"America/Sao_Paulo", "2018-11-04", 1541300400},
        // The whole day was left out.
        {"Pacific/Apia", "2011-12-30", std::nullopt},
    };
    for (auto& [zone, text, moment] : cases) {
        Clock::setTimeZone(zone);
        EXPECT_EQ(dateOnly_.date(text), moment) << zone << " " << text;
        if (moment) {
            EXPECT_EQ(dateOnly_.string(*moment), text) << zone;
        }
    }
}

TEST_F(DatesTests, TheGregorianCalendarHoldsBefore1582) {
    Clock::setTimeZone("UTC");
    auto german = DateFormatter::pattern("dd.MM.yyyy", {.locale = "de_DE"});
    const std::tuple<const char*, const char*, std::int64_t> cases[] = {{"1582-10-14", "14.10.1582", -12219379200},
                                                                        {"1500-02-28", "28.02.1500", -14826758400},
                                                                        {"0001-01-01", "01.01.0001", -62135596800}};
    for (auto& [date, shown, moment] : cases) {
        EXPECT_EQ(dateOnly_.date(date), moment) << date;
        EXPECT_EQ(dateOnly_.string(moment), date);
        EXPECT_EQ(dateTime_.date(std::string(date) + "T00:00:00Z"), moment) << date;
        EXPECT_EQ(dateTime_.string(moment), std::string(date) + "T00:00:00Z");
        EXPECT_EQ(german.string(moment), shown);
        EXPECT_EQ(german.date(shown), moment) << shown;
    }
    EXPECT_EQ(dateOnly_.date("1500-02-29"), std::nullopt) << "a leap day of the Julian calendar";
}

TEST_F(DatesTests, TimesBeyondTheCalendarHaveNoText) {
    for (auto extreme : {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()})
        EXPECT_EQ(dateTime_.string(extreme), std::nullopt);
}

// Changes a valid text in up to three places, so that most results are nearly valid.
std::string broken(std::string text, std::mt19937& random) {
    const std::string_view pieces[] = {"0", "9", "-", ":", "T", "Z", "+", " ", "", "00", "\xD9\xA3", ".5", "GMT", "t"};
    for (auto changes = random() % 4; changes > 0 && !text.empty(); --changes)
        text.replace(random() % text.size(), random() % 3, pieces[random() % std::size(pieces)]);
    return text;
}

TEST_F(DatesTests, WireFormsAgreeWithIcuOnRandomTexts) {
    for (const char* zone :
         {"UTC", "Europe/Berlin", "America/New_York", "Asia/Kolkata", "Australia/Lord_Howe", "Africa/Monrovia"}) {
        Clock::setTimeZone(zone);
        Reference dateTime(DateFormatter::iso8601Pattern, zone), dateOnly(DateFormatter::dateOnlyPattern, zone);
        std::mt19937_64 random(3);
        std::mt19937 breaking(5);
        for (int round = 0; round < 2'000; ++round) {
            // Around now, over some centuries, and far out.
            const std::int64_t spans[] = {3'000'000'000, 20'000'000'000, 300'000'000'000};
            auto span = spans[round % 3];
            auto moment = static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(2 * span)) - span;
            auto long_ = dateTime.string(moment), short_ = dateOnly.string(moment);
            ASSERT_EQ(dateTime_.string(moment), long_) << moment;
            ASSERT_EQ(dateOnly_.string(moment), short_) << moment;
            for (auto& text : {long_, broken(long_, breaking)})
                ASSERT_EQ(dateTime_.date(text), dateTime.date(text)) << text;
            for (auto& text : {short_, broken(short_, breaking)})
                ASSERT_EQ(dateOnly_.date(text), dateOnly.date(text)) << text;
        }
    }
}

TEST_F(DatesTests, WireFormsDoNotFollowTheUsersLocale) {
    auto former = icu::Locale::getDefault();
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale("ar_EG@calendar=islamic;numbers=arab"), status);
    EXPECT_EQ(DateFormatter::pattern(std::string(DateFormatter::iso8601Pattern)).string(253'402'300'800),
              "10000-01-01T01:00:00+01:00");
    EXPECT_EQ(dateOnly_.string(0), "1970-01-01");
    icu::Locale::setDefault(former, status);
}

TEST_F(DatesTests, PatternsAndStylesSpeakTheirLocale) {
    const std::int64_t moment = 1709181000;
    auto at = [&](const char* pattern, const char* locale) {
        return DateFormatter::pattern(pattern, {.locale = locale}).string(moment);
    };
    EXPECT_EQ(at("MMM d, yyyy", "en_US"), "Feb 29, 2024");
    EXPECT_EQ(at("EEEE", "de_DE"), "Donnerstag");
    EXPECT_EQ(at("not a pattern b", "en_US"), std::nullopt);
    auto medium = DateFormatter::styles(Style::medium, Style::short_, {.locale = "de_DE", .timeZone = "Asia/Kolkata"});
    EXPECT_EQ(medium.string(moment), "29.02.2024, 10:00");
    EXPECT_EQ(medium.date("29.02.2024, 10:00"), moment);
}

TEST_F(DatesTests, UnknownZoneIsUtcAndLogged) {
    std::string logged;
    auto former = setLogSink([&](std::string_view line) { logged = line; });
    EXPECT_EQ(DateFormatter::pattern("HH:mm", {.locale = "en_US", .timeZone = "Mars/Olympus"}).string(0), "00:00");
    setLogSink(former);
    EXPECT_THAT(logged, testing::HasSubstr("Mars/Olympus"));
}

TEST_F(DatesTests, RelativeWordsFollowTheClock) {
    using namespace std::chrono_literals;
    // The day on which Berlin moved its clocks forward.
    Clock::set(Clock::WallTime(std::chrono::sys_days(std::chrono::year(2024) / 3 / 31) + 10h));
    auto noon = Clock::secondsSince1970();
    const std::int64_t day = 86400;
    auto english = DateFormatter::styles(Style::medium, Style::none, {.locale = "en_US", .relative = true});
    EXPECT_EQ(english.string(noon), "today");
    EXPECT_EQ(english.string(noon - day), "yesterday");
    EXPECT_EQ(english.string(noon + 2 * day), "Apr 2, 2024");
    auto german = DateFormatter::styles(Style::medium, Style::short_, {.locale = "de_DE", .relative = true});
    EXPECT_THAT(german.string(noon - 2 * day).value_or(""),
                testing::AllOf(testing::StartsWith("vorgestern"), testing::EndsWith("11:00")));
}

TEST_F(DatesTests, OneFormatterServesManyThreads) {
    auto words = DateFormatter::pattern("d MMM yyyy HH:mm:ss", {.locale = "en_US", .timeZone = "UTC"});
    std::atomic<int> wrong = 0;
    onThreads(4, [&](int t) {
        for (std::int64_t i = 0; i < 500; ++i) {
            auto moment = (t * 1000 + i) * 100'003;
            wrong += words.date(words.string(moment).value_or("")) != moment;
            wrong += dateTime_.date(dateTime_.string(moment).value_or("")) != moment;
            if (t == 0) Clock::setTimeZone(i % 2 ? "Asia/Tokyo" : "Europe/Berlin");
        }
    });
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace tarvo::platform
