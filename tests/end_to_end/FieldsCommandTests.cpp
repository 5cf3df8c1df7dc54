#include <regex>

#include "platform/Text.h"
#include "tests/end_to_end/EndToEnd.h"

namespace tarvo::tests {

namespace {

std::string layoutsIn(const std::string& output) {
    return json::write(member(json::parse(output).value_or(Value()), "layouts")).value_or("");
}

}  // namespace

TEST(FieldsCommand, ListsByLayoutAndSection) {
    EndToEnd world;
    auto first = endOf(world.host({"fields", "Leads"}));
    ASSERT_EQ(first.status, 0) << first.errors;
    EXPECT_EQ(first.errors, "");
    std::string headings;
    for (auto& line : text::split(first.output, "\n"))
        if (line.starts_with("Layout ")) headings += line + "; ";
    EXPECT_EQ(headings, "Layout Standard (default); Layout Partner; Layout Internal (not for this profile); ");
    // Columns are as wide as their widest cell.
    auto narrow = std::regex_replace(first.output, std::regex(" {2,}"), "|");
    EXPECT_TRUE(contains(narrow,
                         "\nLead Information\n|LABEL|API NAME|COLUMN|TYPE|MANDATORY\n"
                         "|Salutation|Salutation|SALUTATION|picklist|no\n"))
        << narrow;
    EXPECT_TRUE(contains(narrow, "\n|Last Name|Last_Name|LASTNAME|text|yes\n")) << narrow;
}

TEST(FieldsCommand, ListsWithoutTheServerAndKeepsWhatIsStoredWhenAFetchFails) {
    EndToEnd world;
    auto first = endOf(world.host({"fields", "Leads"}));
    ASSERT_EQ(first.status, 0) << first.errors;
    world.stopServer();
    EXPECT_EQ(endOf(world.host({"fields", "Leads"})).output, first.output);
    for (auto& arguments : std::vector<std::vector<std::string>>{{"fields", "Leads", "--fetch"}, {"fields", "Deals"}})
        expectRefusal(endOf(world.host(arguments)), 1, "server");
    EXPECT_EQ(endOf(world.host({"fields", "Leads"})).output, first.output) << "a failed fetch took what was stored";
}

TEST(FieldsCommand, FetchesTheLayoutsOfAModuleWhoseFieldsCameWithAnother) {
    EndToEnd world;
    ASSERT_EQ(endOf(world.host({"fields", "Leads"})).status, 0);
    world.setFault(R"({"call":"getmetadatainfo","times":1,"fault":"dropBefore"})");
    auto before = endOf(world.host({"fields", "CustomModule3"}));
    EXPECT_EQ(before.status, 0) << before.errors;
    EXPECT_TRUE(before.output.starts_with("No layout\n\nAll fields\n")) << before.output;
    auto after = endOf(world.host({"fields", "CustomModule3"}));
    EXPECT_EQ(after.status, 0) << after.errors;
    EXPECT_TRUE(after.output.starts_with("Layout Standard (default)\n")) << after.output;
}

TEST(FieldsCommand, BothNamingsGiveTheSameLayoutsSectionsAndOrder) {
    std::vector<std::string> found;
    for (std::string naming : {"column", "api"}) {
        EndToEnd world({"--identifier", naming});
        for (auto module : {"Leads", "Deals"}) {
            auto listed = endOf(world.host({"--identifier", naming, "fields", module, "--json"}));
            EXPECT_EQ(listed.status, 0) << listed.errors;
            found.push_back(layoutsIn(listed.output));
        }
    }
    ASSERT_EQ(found.size(), 4u);
    EXPECT_TRUE(contains(found[0], R"("apiName":"Last_Name","column":"LASTNAME","type":"text","mandatory":true)"))
        << found[0];
    EXPECT_EQ(found[0], found[2]);
    EXPECT_EQ(found[1], found[3]);
}

TEST(FieldsCommand, SaysInOneLineWhatIsWrong) {
    EndToEnd world;
    const std::string fault = R"("call":"getmetadatainfo","fault":)";
    expectRefusals(
        world,
        {{{"fields"}, 2, "MODULE"},
         {{"fields", "Nothing"}, 1, "there is no module \"Nothing\""},
         {{"fields", "leads"}, 1, "there is no module \"leads\""},
         {{"fields", "Leads"}, 1, "cannot be used", fault + R"("nonJson")"},
         {{"fields", "Leads"}, 1, "did not answer", fault + R"("dropBefore")"},
         {{"fields", "Leads"}, 1, "could not be fetched", fault + R"("missingBlocks")"},
         {{"fields", "Leads"}, 1, "no fields of Leads", fault + R"("wrongTypes","blocks":["Leads"],"level":1)"}});
    EXPECT_EQ(endOf(world.host({"fields", "Leads"})).status, 0);
}

}  // namespace tarvo::tests
