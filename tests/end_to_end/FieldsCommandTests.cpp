#include "platform/Text.h"
#include "tests/end_to_end/EndToEnd.h"

namespace tarvo::tests {

namespace {

std::string layoutsIn(const std::string& output) {
    auto machine = json::parse(output);
    if (!machine || !machine->asMap()) return "";
    return json::write(machine->asMap()->valueOf("layouts")).value_or("");
}

}  // namespace

TEST(FieldsCommand, ListsByLayoutAndSection) {
    EndToEnd world;
    auto first = endOf(world.host({"fields", "Leads"}));
    ASSERT_EQ(first.status, 0) << first.errors;
    EXPECT_EQ(first.errors, "");
    auto lines = text::split(first.output, "\n");
    std::vector<std::string> layouts;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(layouts),
                 [](auto& line) { return line.starts_with("Layout "); });
    EXPECT_EQ(layouts, (std::vector<std::string>{"Layout Standard (default)", "Layout Partner",
                                                 "Layout Internal (not for this profile)"}));
    auto section = std::find(lines.begin(), lines.end(), "Lead Information");
    ASSERT_LT(section - lines.begin(), static_cast<std::ptrdiff_t>(lines.size()) - 4) << first.output;
    auto cells = [](const std::string& line) {
        std::vector<std::string> cells;
        for (auto& cell : text::split(line, "  "))
            if (auto begin = cell.find_first_not_of(' '); begin != std::string::npos)
                cells.push_back(cell.substr(begin));
        return cells;
    };
    using Cells = std::vector<std::string>;
    EXPECT_EQ(cells(section[1]), (Cells{"LABEL", "API NAME", "COLUMN", "TYPE", "MANDATORY"}));
    EXPECT_EQ(cells(section[2]), (Cells{"Salutation", "Salutation", "SALUTATION", "picklist", "no"}));
    EXPECT_EQ(cells(section[4]), (Cells{"Last Name", "Last_Name", "LASTNAME", "text", "yes"}));
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
    struct Case {
        std::vector<std::string> arguments;
        std::string fault;
        int status;
        std::string says;
    };
    const std::vector<Case> cases = {
        {{"fields"}, "", 2, "MODULE"},
        {{"fields", "Nothing"}, "", 1, "there is no module \"Nothing\""},
        {{"fields", "leads"}, "", 1, "there is no module \"leads\""},
        {{"fields", "Leads"}, R"("nonJson")", 1, "cannot be used"},
        {{"fields", "Leads"}, R"("dropBefore")", 1, "did not answer"},
        {{"fields", "Leads"}, R"("missingBlocks")", 1, "could not be fetched"},
        {{"fields", "Leads"}, R"("wrongTypes","blocks":["Leads"],"level":1)", 1, "no fields of Leads"},
    };
    for (auto& one : cases) {
        SCOPED_TRACE(text::join(one.arguments, " ") + " " + one.fault);
        if (!one.fault.empty()) world.setFault(R"({"call":"getmetadatainfo","times":1,"fault":)" + one.fault + "}");
        auto ended = endOf(world.host(one.arguments));
        expectRefusal(ended, one.status, one.says);
        EXPECT_EQ(ended.output, "");
    }
    EXPECT_EQ(endOf(world.host({"fields", "Leads"})).status, 0);
}

}  // namespace tarvo::tests
