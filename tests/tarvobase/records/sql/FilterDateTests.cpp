#include "platform/dates/Dates.h"
#include "tarvobase/records/sql/FilterToWhereConverter.h"
#include "tests/tarvobase/records/sql/FilterFixture.h"

namespace tarvo {
namespace {

using D = DateFilterTypes;
using Exact = DateTimeFilterTypes;

class FilterDateTest : public FilterTest {
protected:
    /// `now` and the rows are local times. The ids of the rows are their places in the list.
    struct Case {
        const char *zone, *now;
        FilterType type;
        std::vector<std::string> inputs;
        std::string ids;
    };
    using Times = std::vector<std::string>;

    static std::int64_t seconds(const std::string& localTime) {
        return DateFormatter::pattern("yyyy-MM-dd HH:mm:ss").date(localTime).value();
    }

    void expect(const Times& times, const std::vector<Case>& cases) {
        for (auto& one : cases) {
            platform::Clock::setTimeZone(one.zone);
            platform::Clock::set(platform::Clock::WallTime(std::chrono::seconds(seconds(one.now))));
            ValueList rows;
            for (auto& time : times) rows.emplace_back(seconds(time));
            store("Created_Time", rows);
            ColumnFilter filter{.column = "Created_Time", .filterInputValues = one.inputs, .filterType = one.type};
            auto where = FilterToWhereConverter::getWhereStatement(filter, "Leads");
            EXPECT_EQ(where ? idsWhere(*where) : "none", one.ids) << one.zone << " at " << one.now;
        }
    }
};

constexpr auto berlin = "Europe/Berlin", kolkata = "Asia/Kolkata", losAngeles = "America/Los_Angeles";

TEST_F(FilterDateTest, DaysBeginAtLocalMidnight) {
    const Times rows{"2024-02-27 23:59:59", "2024-02-28 00:00:00", "2024-02-28 23:59:59",
                     "2024-02-29 00:00:00", "2024-02-29 23:59:59", "2024-03-01 00:00:00"};
    const std::vector<Case> cases = {
        // The first and the last second of a leap day.
        {berlin, "2024-02-29 00:00:00", D::today, {}, "4 5"},
        {kolkata, "2024-02-29 23:59:59", D::today, {}, "4 5"},
        {losAngeles, "2024-02-29 00:00:00", D::yesterday, {}, "2 3"},
        {berlin, "2024-03-01 00:00:00", D::yesterday, {}, "4 5"},
        {berlin, "2024-02-29 12:00:00", D::inTheLast, {"1", "days"}, "2 3 4 5"},
        {berlin, "2024-02-29 12:00:00", D::inTheLast, {"0", "days"}, "4 5"},
        {berlin, "2024-02-28 12:00:00", D::dueIn, {"1", "days"}, "2 3 4 5"},
        {kolkata, "2024-02-28 12:00:00", D::on, {"2024-02-29 10:00:00 +0530"}, "4 5"},
        {kolkata, "2024-02-28 12:00:00", D::before, {"2024-02-29 10:00:00 +0530"}, "1 2 3"},
        {kolkata, "2024-02-28 12:00:00", D::after, {"2024-02-28 10:00:00 +0530"}, "4 5 6"},
        // The same moment falls on another day in another zone.
        {losAngeles, "2024-02-28 12:00:00", D::on, {"2024-02-29 01:00:00 +0000"}, "2 3"},
        {berlin, "2024-02-28 12:00:00", D::between, {"2024-02-28T09:00:00Z", "2024-02-29T09:00:00Z"}, "2 3 4 5"},
        {kolkata, "2024-02-28 12:00:00", D::on, {"2024-02-29T04:30:00Z"}, "4 5"},
        {berlin, "2024-02-28 12:00:00", Exact::before, {"2024-02-28 00:00:00 +0100"}, "1"},
        {berlin, "2024-02-28 12:00:00", Exact::before, {"2024-02-27T23:00:00Z"}, "1"},
        {berlin, "2024-02-28 12:00:00", Exact::between, {"2024-02-28T00:00:00+01:00", "2024-02-29T22:59:59Z"}, "2 3 4"},
        {berlin, "2024-02-28 12:00:00", Exact::after, {"2024-02-29 23:59:59 +0100"}, "5 6"},
    };
    expect(rows, cases);
}

TEST_F(FilterDateTest, MonthsAndYearsHaveTheirOwnLengths) {
    const Times rows{"2023-12-31 23:59:59", "2024-01-01 00:00:00", "2024-01-31 23:59:59", "2024-02-01 00:00:00",
                     "2024-02-29 23:59:59", "2024-03-01 00:00:00", "2024-12-31 23:59:59", "2025-01-01 00:00:00"};
    const std::vector<Case> cases = {
        {berlin, "2024-02-29 23:59:59", D::thisMonth, {}, "4 5"},
        {berlin, "2024-03-31 12:00:00", D::lastMonth, {}, "4 5"},
        {berlin, "2024-01-31 12:00:00", D::lastMonth, {}, "1"},
        {losAngeles, "2024-12-31 23:59:59", D::thisYear, {}, "2 3 4 5 6 7"},
        {berlin, "2024-03-31 12:00:00", D::inTheLast, {"1", "months"}, "4 5 6"},
        {berlin, "2024-01-31 12:00:00", D::dueIn, {"1", "months"}, "2 3 4 5"},
        {berlin, "2024-12-31 12:00:00", D::dueIn, {"1", "months"}, "7 8"},
    };
    expect(rows, cases);
}

TEST_F(FilterDateTest, WeeksRunFromSundayAtTheTimeOfDayOfTheMoment) {
    // 2024-03-10 was a Sunday.
    const Times rows{"2024-03-02 12:00:00", "2024-03-03 11:59:59", "2024-03-03 12:00:00",
                     "2024-03-09 11:59:59", "2024-03-09 12:00:00", "2024-03-10 12:00:00",
                     "2024-03-13 00:00:00", "2024-03-16 11:59:59", "2024-03-16 12:00:00"};
    const std::vector<Case> cases = {
        {berlin, "2024-03-13 12:00:00", D::thisWeek, {}, "6 7 8"},
        {berlin, "2024-03-10 12:00:00", D::thisWeek, {}, "6 7 8"},
        {berlin, "2024-03-16 12:00:00", D::thisWeek, {}, "6 7 8"},
        {berlin, "2024-03-13 12:00:00", D::lastWeek, {}, "3 4"},
        {berlin, "2024-03-16 12:00:00", D::lastWeek, {}, "3 4"},
        // Fourteen days back, and then forward to Sunday.
        {berlin, "2024-03-16 23:00:00", D::inTheLast, {"2", "weeks"}, "2 3 4 5 6 7 8 9"},
        {berlin, "2024-03-03 00:00:00", D::dueIn, {"1", "weeks"}, "2 3 4 5 6"},
    };
    expect(rows, cases);
}

TEST_F(FilterDateTest, DaysOfAClockChangeAreWhole) {
    // Clocks went on at 2:00 on 2024-03-31 and back at 3:00 on 2024-10-27.
    const Times spring{"2024-03-30 23:59:59", "2024-03-31 00:00:00", "2024-03-31 03:30:00", "2024-03-31 23:59:59",
                       "2024-04-01 00:00:00"};
    const Times autumn{"2024-10-26 23:59:59", "2024-10-27 00:00:00", "2024-10-27 02:30:00", "2024-10-27 23:59:59",
                       "2024-10-28 00:00:00"};
    expect(spring, {{berlin, "2024-03-31 12:00:00", D::today, {}, "2 3 4"},
                    {berlin, "2024-04-01 00:30:00", D::yesterday, {}, "2 3 4"},
                    {berlin, "2024-03-30 12:00:00", D::on, {"2024-03-31 12:00:00 +0200"}, "2 3 4"}});
    expect(autumn, {{berlin, "2024-10-27 00:00:00", D::today, {}, "2 3 4"},
                    {berlin, "2024-10-28 00:30:00", D::yesterday, {}, "2 3 4"},
                    {berlin, "2024-10-26 12:00:00", D::dueIn, {"1", "days"}, "1 2 3 4"}});
}

TEST_F(FilterDateTest, InputsThatCannotBeReadGiveNoCondition) {
    const std::pair<FilterType, std::vector<std::string>> bad[] = {
        {D::inTheLast, {}},
        {D::inTheLast, {"2"}},
        {D::inTheLast, {"two", "days"}},
        {D::inTheLast, {"2", "years"}},
        {D::inTheLast, {"-1", "days"}},
        {D::dueIn, {"9223372036854775807", "weeks"}},
        {D::on, {}},
        {D::on, {"2024-02-30 00:00:00 +0000"}},
        {D::between, {"2024-02-28 00:00:00 +0000"}},
        {Exact::before, {"2024-02-28"}},
        {Exact::before, {"2024-02-30T00:00:00Z"}},
    };
    for (auto& [type, inputs] : bad)
        expect({"2024-03-02 12:00:00"}, {{berlin, "2024-03-02 12:00:00", type, inputs, "none"}});
}

}  // namespace
}  // namespace tarvo
