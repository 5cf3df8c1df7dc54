#include <algorithm>
#include <set>

#include "platform/Text.h"
#include "tests/end_to_end/EndToEnd.h"

namespace tarvo::tests {

namespace {

using Arguments = std::vector<std::string>;

/// Returns the ids of the records that `list --json` printed.
std::vector<std::string> idsIn(const Ended& list) {
    EXPECT_EQ(list.status, 0) << list.errors;
    std::vector<std::string> ids;
    auto records = member(json::parse(list.output).value_or(Value()), "records");
    if (records.asList())
        for (auto& record : *records.asList()) ids.push_back(member(record, "recordId").textOr(""));
    return ids;
}

Ended list(const EndToEnd& world, Arguments further) {
    further.insert(further.begin(), {"list", "Leads", "--json"});
    return endOf(world.host(further));
}

}  // namespace

TEST(InitCommand, PrintsRisingPercentagesAndRequestsOnlyWhatFailedWhenItRunsAgain) {
    EndToEnd world({"--records", "60"});
    world.setFault(R"({"call":"getpipelines","times":1,"fault":"dropBefore"})");
    auto first = endOf(world.host({"init"}));
    ASSERT_EQ(first.status, 0) << first.errors;
    EXPECT_TRUE(first.output.starts_with("0% currentUser, 0 records\n")) << first.output;
    int last = -1;
    for (auto& line : text::split(first.output, "\n")) {
        auto percent = text::toInteger(line.substr(0, line.find('%')));
        if (!percent) break;
        EXPECT_GT(*percent, last) << first.output;
        last = static_cast<int>(*percent);
    }
    EXPECT_EQ(last, 100);
    EXPECT_TRUE(contains(first.output, "pipelines: the server did not answer")) << first.output;

    struct {
        Arguments arguments;
        bool isDownloaded;
        std::int64_t requests;
    } cases[] = {{{"init", "--json"}, false, 0},
                 {{"init", "--json", "--fetch"}, true, 2},
                 {{"init", "--json", "--fetch"}, true, 1}};
    for (auto& one : cases) {
        auto again = endOf(world.host(one.arguments));
        auto summary = lastLineOf(again.output);
        EXPECT_EQ(member(summary, "downloaded"), Value(one.isDownloaded)) << again.output;
        EXPECT_EQ(member(summary, "requests"), Value(one.requests)) << again.output;
        EXPECT_EQ(member(summary, "failures"), Value(ValueList())) << again.output;
        EXPECT_GT(member(summary, "records").asInteger().value_or(0), 500);
    }
}

TEST(InitCommand, SaysInOneLineWhyItCannotBegin) {
    EndToEnd world;
    for (auto& [fault, says] : {std::pair("dropBefore", "did not answer"), {"nonJson", "cannot be used"}}) {
        world.setFault(R"({"call":"getappinitdata","times":1,"fault":")" + std::string(fault) + "\"}");
        expectRefusal(endOf(world.host({"init", "--json"})), 1, says);
    }
    expectRefusal(endOf(world.host({"init"}, "wrong passphrase")), 1, "wrong passphrase: ");
    EXPECT_EQ(endOf(world.host({"init"})).status, 0) << "a run that stopped starts again";
}

/// An account that was downloaded once. Its first two pages were listed before the server stopped, so that every test
/// lists from the encrypted copy.
class ListCommand : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        world = std::make_unique<EndToEnd>(Arguments{"--records", "60"});
        ASSERT_EQ(endOf(world->host({"init"})).status, 0);
        first = idsIn(list(*world, {"--limit", "20"}));
        second = idsIn(list(*world, {"--limit", "20", "--from", "20"}));
        deals = endOf(world->host({"list", "Deals"})).output;
        world->stopServer();
    }
    static void TearDownTestSuite() { world.reset(); }

    static inline std::unique_ptr<EndToEnd> world;
    static inline std::vector<std::string> first, second;
    static inline std::string deals;
};

TEST_F(ListCommand, ListsTheSamePagesWithoutTheServer) {
    std::set<std::string> all(first.begin(), first.end());
    all.insert(second.begin(), second.end());
    EXPECT_EQ(all.size(), 40u) << "the pages share no record";
    EXPECT_EQ(idsIn(list(*world, {"--limit", "20"})), first);
    EXPECT_EQ(idsIn(list(*world, {"--limit", "20", "--from", "20"})), second);
}

TEST_F(ListCommand, ListsStoredRecordsOfAViewThatWasNeverListed) {
    auto contacts = endOf(world->host({"list", "Contacts", "--json"}));
    EXPECT_EQ(idsIn(contacts).size(), 20u);
    EXPECT_TRUE(contains(contacts.errors, "the server did not answer (cannot connect")) << contacts.errors;
}

TEST(ListOfAFreshAccount, ALaterPageThatIsListedFirstLeavesNoGap) {
    for (std::string naming : {"column", "api"}) {
        EndToEnd world({"--records", "60", "--identifier", naming});
        auto page = [&](Arguments range) {
            range.insert(range.end(), {"--identifier", naming});
            return idsIn(list(world, range));
        };
        auto later = page({"--from", "20", "--limit", "5"});
        auto all = page({"--limit", "25"});
        ASSERT_EQ(all.size(), 25u);
        EXPECT_EQ(Arguments(all.begin() + 20, all.end()), later);
    }
}

TEST_F(ListCommand, HeadsTheTableWithTheLabelsOfTheViewAndARecordWithItsSections) {
    EXPECT_TRUE(deals.starts_with("ID  ") && contains(deals, "  Account Name  ")) << deals;
    auto shown = endOf(world->host({"show", "Leads", first.front()}));
    EXPECT_TRUE(shown.output.starts_with("Leads " + first.front() + "\n\nLead Information\n  ")) << shown.output;
}

TEST_F(ListCommand, SortsTheStoredRecords) {
    auto sorted = json::parse(list(*world, {"--sort", "Last_Name:desc", "--limit", "50"}).output).value_or(Value());
    auto records = member(sorted, "records");
    ASSERT_TRUE(records.asList() && records.asList()->size() == 50u);
    auto nameOf = [](const Value& record) { return member(member(record, "values"), "LASTNAME").textOr(""); };
    EXPECT_LT(nameOf(records.asList()->back()), nameOf(records.asList()->front()));
}

TEST_F(ListCommand, PrintsTextsAsPeopleReadThem) {
    auto readable = list(*world, {"--columns", "Owner,Created_Time"});
    auto texts = member(json::parse(readable.output).value_or(Value()), "texts");
    ASSERT_TRUE(texts.asList() && texts.asList()->size() == 20u) << readable.errors;
    for (auto& row : *texts.asList()) {
        auto owner = (*row.asList())[0].textOr(""), created = (*row.asList())[1].textOr("");
        EXPECT_FALSE(owner.empty() || text::toInteger(owner)) << "an owner without a name: " << owner;
        EXPECT_EQ(std::count(created.begin(), created.end(), '/'), 2) << "not in the user's format: " << created;
    }
}

TEST_F(ListCommand, SaysInOneLineWhatIsWrong) {
    expectRefusals(*world, {{{"list", "Nothing"}, 1, "there is no module"},
                            {{"list", "Leads", "--view", "No such"}, 1, "no view \"No such\""},
                            {{"list", "Leads", "--sort", "Nothing"}, 1, "no field \"Nothing\""},
                            {{"list", "Leads", "--sort", "Company:up"}, 2, "--sort"},
                            {{"list", "Leads", "--filter", "Company"}, 2, "--filter"},
                            {{"list", "Leads", "--filter", "Company:before:x"}, 1, "offers no \"before\""},
                            {{"list", "Leads", "--filter", "Created_Time:between:1"}, 2, "takes 2 values"},
                            {{"list", "Leads", "--filter", "Created_Time:before:soon"}, 2, "no condition"},
                            {{"list", "Leads", "--limit", "0"}, 2, "--limit"},
                            {{"show", "Leads", "12"}, 1, "no record 12 of Leads is stored"}});
}

}  // namespace tarvo::tests
