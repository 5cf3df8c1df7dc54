#include "tests/end_to_end/EndToEnd.h"

namespace tarvo::tests {

namespace {

constexpr const char* stored = "appInitDataFetchedAndSaved";
constexpr const char* noAnswer = "networkResponseError";
constexpr const char* unusable = "parsingError";

struct FaultCase {
    const char* name;
    const char* fault;  // members of the fault besides its call
    const char* notice;
    std::size_t modules;  // how many of the two requested modules are stored
    bool formats;         // whether the date and time formats are stored
};

constexpr FaultCase cases[] = {
    {"delay", R"("fault":"delay","milliseconds":200)", stored, 2, true},
    {"dropBefore", R"("fault":"dropBefore")", noAnswer, 0, false},
    {"dropAfter", R"("fault":"dropAfter")", noAnswer, 0, false},
    {"truncate", R"("fault":"truncate")", noAnswer, 0, false},
    {"nonJson", R"("fault":"nonJson")", unusable, 0, false},
    {"errorEnvelope", R"("fault":"errorEnvelope")", unusable, 0, false},
    {"errorStatus", R"("fault":"errorEnvelope","status":500)", unusable, 0, false},
    {"wrongDocument", R"("fault":"wrongTypes","level":0)", unusable, 0, false},
    {"wrongResponse", R"("fault":"wrongTypes","level":1)", unusable, 0, false},
    {"wrongResult", R"("fault":"wrongTypes","level":2)", unusable, 0, false},
    {"wrongEntries", R"("fault":"wrongTypes","level":3)", unusable, 0, false},
    {"wrongInfoAndData", R"("fault":"wrongTypes","level":4)", unusable, 0, false},
    {"wrongValuesOfBlocks", R"("fault":"wrongTypes","level":5)", unusable, 0, false},
    {"wrongTables", R"("fault":"wrongTypes","blocks":["tables"],"level":0)", unusable, 0, false},
    {"wrongStatements", R"("fault":"wrongTypes","blocks":["tables"],"level":1)", unusable, 0, false},
    {"wrongModules", R"("fault":"wrongTypes","blocks":["activeModules"],"level":0)", stored, 0, true},
    {"wrongModuleRows", R"("fault":"wrongTypes","blocks":["activeModules"],"level":1)", stored, 0, true},
    {"wrongModuleValues", R"("fault":"wrongTypes","blocks":["activeModules"],"level":2)", stored, 0, true},
    {"wrongFormats", R"("fault":"wrongTypes","blocks":["dateTimeFormat"],"level":0)", stored, 2, false},
    {"wrongFormatValues", R"("fault":"wrongTypes","blocks":["dateTimeFormat"],"level":1)", stored, 2, false},
    {"wrongOthers",
     R"("fault":"wrongTypes","blocks":["userDetails","activeUsers","settings","companyInfo","VestraOrgs"],"level":0)",
     stored, 2, true},
    {"wrongOtherRows",
     R"("fault":"wrongTypes","blocks":["userDetails","activeUsers","settings","companyInfo","VestraOrgs"],"level":1)",
     stored, 2, true},
    {"noBlocks", R"("fault":"missingBlocks")", unusable, 0, false},
    {"noTables", R"("fault":"missingBlocks","blocks":["tables"])", unusable, 0, false},
    {"noModules", R"("fault":"missingBlocks","blocks":["activeModules"])", stored, 0, true},
    {"noFormats", R"("fault":"missingBlocks","blocks":["dateTimeFormat"])", stored, 2, false},
    {"noOthers",
     R"("fault":"missingBlocks","blocks":["userDetails","activeUsers","settings","companyInfo","VestraOrgs"])", stored,
     2, true},
    {"shortModuleRows", R"("fault":"shortRows","blocks":["activeModules"])", stored, 2, true},
    {"repeated", R"("fault":"repeatBlocks")", stored, 2, true},
};

}  // namespace

class InitFault : public ::testing::TestWithParam<FaultCase> {};

TEST_P(InitFault, EndsInItsOutcome) {
    auto& one = GetParam();
    EndToEnd world;
    world.setFault(std::string(R"({"call":"getappinitdata",)") + one.fault + "}");
    auto host = world.host({"serve"});
    host->send(R"({"id":1,"call":"host.openDatabase"})");
    host->send(R"({"id":2,"call":"host.appInit"})");
    host->send(R"({"id":3,"call":"GetModulesUC","request":{"moduleNames":["Leads","Contacts"]}})");
    EXPECT_EQ(member(jsonLine(*host), "event"), Value("done"));
    EXPECT_EQ(member(jsonLine(*host), "name"), Value(one.notice)) << host->errors();
    EXPECT_EQ(member(jsonLine(*host), "event"), Value("done"));
    auto modules = member(member(jsonLine(*host), "response"), "modules");
    ASSERT_TRUE(modules.asList()) << host->errors();
    EXPECT_EQ(modules.asList()->size(), one.modules);
    EXPECT_EQ(host->finish(), 0) << host->errors();
    auto settings = world.content(world.home() + "/settings/tarvo-host.jsonl");
    EXPECT_EQ(settings.find("dd/MM/yyyy") != std::string::npos, one.formats) << settings;
}

INSTANTIATE_TEST_SUITE_P(Faults, InitFault, ::testing::ValuesIn(cases),
                         [](auto& test) { return std::string(test.param.name); });

}  // namespace tarvo::tests
