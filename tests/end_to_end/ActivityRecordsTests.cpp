#include <map>

#include "tests/end_to_end/EndToEnd.h"

namespace tarvo::tests {

namespace {

/// Returns the number of records per kind of activity that a call answers: by their module, or in the table that the
/// kinds share by their type.
std::map<std::string, int> kindsIn(const Value& line, const std::string& typeColumn) {
    std::map<std::string, int> kinds;
    auto records = member(member(line, "arguments"), "records");
    if (!records.asList()) return kinds;
    for (auto& record : *records.asList()) {
        auto module = member(record, "moduleName").textOr("");
        ++kinds[module == "Activities" ? member(member(record, "values"), typeColumn).textOr("") : module];
    }
    return kinds;
}

}  // namespace

TEST(ActivityRecords, EveryKindIsFoundInBothNamings) {
    std::vector<std::map<std::string, int>> found;
    for (std::string naming : {"column", "api"}) {
        EndToEnd world({"--records", "60", "--identifier", naming});
        ASSERT_EQ(endOf(world.host({"init", "--identifier", naming})).status, 0);
        auto host = world.host({"serve", "--identifier", naming});
        host->send(R"({"id":1,"call":"host.openDatabase"})");
        EXPECT_TRUE(host->line());
        for (std::string module : {"Tasks", "Activities"}) {
            host->send(R"({"id":2,"call":"GetRecordsUseCase.getActivityRecords","request":{"moduleName":")" + module +
                       R"(","fromDate":0,"toDate":4102444800}})");
            found.push_back(kindsIn(jsonLine(*host), naming == "api" ? "Activity_Type" : "ACTIVITYTYPE"));
            EXPECT_TRUE(host->line());
            for (auto kind : {"Tasks", "Events", "Calls"}) EXPECT_GT(found.back()[kind], 0) << kind << " " << naming;
        }
    }
    EXPECT_EQ(found[0], found[2]);
    EXPECT_EQ(found[1], found[3]);
}

}  // namespace tarvo::tests
