#include <algorithm>
#include <set>

#include "platform/Text.h"
#include "tests/end_to_end/EndToEnd.h"

namespace tarvo::tests {

namespace {

using Arguments = std::vector<std::string>;

/// Ids of the records in the answer of a list for programs.
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

TEST(InitCommand, DownloadsOnceAndSumsUp) {
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

    struct Case {
        Arguments arguments;
        bool isDownloaded;
        std::int64_t requests;
    };
    // What failed and nothing else is asked for again.
    for (auto one :
         std::vector<Case>{{{"init"}, false, 0}, {{"init", "--fetch"}, true, 2}, {{"init", "--fetch"}, true, 1}}) {
        one.arguments.push_back("--json");
        auto again = endOf(world.host(one.arguments));
        auto lines = text::split(again.output, "\n");
        auto summary = json::parse(lines[lines.size() - 2]).value_or(Value());
        EXPECT_EQ(member(summary, "downloaded"), Value(one.isDownloaded)) << again.output;
        EXPECT_EQ(member(summary, "requests"), Value(one.requests)) << again.output;
        EXPECT_EQ(member(summary, "failures"), Value(ValueList())) << again.output;
        EXPECT_GT(member(summary, "records").asInteger().value_or(0), 500);
    }
}

TEST(InitCommand, SaysInOneLineWhyItStays) {
    EndToEnd world;
    struct Case {
        std::string fault, says;
        Arguments further;
    };
    const std::vector<Case> cases = {{R"("dropBefore")", "did not answer", {}},
                                     {R"("nonJson")", "cannot be used", {}},
                                     {"", "token", {"--account", "43"}}};
    for (auto& one : cases) {
        if (!one.fault.empty()) world.setFault(R"({"call":"getappinitdata","times":1,"fault":)" + one.fault + "}");
        auto ended = one.further.empty()
                         ? endOf(world.host({"init", "--json"}))
                         : endOf(std::make_unique<Process>(
                               "tarvo-host",
                               Arguments{"--home", world.home(), "--account", "43", "--server-type", "0", "--domain",
                                         "localhost:" + std::to_string(world.port), "init"},
                               world.folder + "/host.log", Arguments{"TARVO_PASSPHRASE=p"}));
        expectRefusal(ended, 1, one.says);
    }
    expectRefusal(endOf(world.host({"init"}, "wrong passphrase")), 1, "wrong passphrase: ");
    EXPECT_EQ(endOf(world.host({"init"})).status, 0) << "a run that stayed begins anew";
}

TEST(ListCommand, PagesFromTheServerAndFromTheCopy) {
    EndToEnd world({"--records", "60"});
    ASSERT_EQ(endOf(world.host({"init"})).status, 0);
    auto first = idsIn(list(world, {"--limit", "20"})), second = idsIn(list(world, {"--limit", "20", "--from", "20"}));
    std::set<std::string> all(first.begin(), first.end());
    all.insert(second.begin(), second.end());
    EXPECT_EQ(all.size(), 40u) << "the pages share records or lack some";
    auto people = endOf(world.host({"list", "Deals"}));
    EXPECT_TRUE(people.output.starts_with("ID  ") && contains(people.output, "  Account Name  ")) << people.output;

    world.stopServer();
    EXPECT_EQ(idsIn(list(world, {"--limit", "20"})), first);
    EXPECT_EQ(idsIn(list(world, {"--limit", "20", "--from", "20"})), second);
    auto sorted = json::parse(list(world, {"--sort", "Last_Name:desc", "--limit", "50"}).output).value_or(Value());
    auto records = member(sorted, "records");
    ASSERT_TRUE(records.asList() && records.asList()->size() == 50u);
    auto filtered = idsIn(list(world, {"--filter", "Lead_Source:isExactly:Web Form,Phone", "--sort", "Company"}));
    EXPECT_TRUE(!filtered.empty() && filtered.size() <= 20u) << filtered.size();

    auto readable = list(world, {"--columns", "Owner,Created_Time"});
    auto texts = member(json::parse(readable.output).value_or(Value()), "texts");
    ASSERT_TRUE(texts.asList() && texts.asList()->size() == 20u) << readable.errors;
    for (auto& row : *texts.asList()) {
        auto owner = (*row.asList())[0].textOr(""), created = (*row.asList())[1].textOr("");
        EXPECT_FALSE(owner.empty() || text::toInteger(owner)) << "an owner without a name: " << owner;
        EXPECT_EQ(std::count(created.begin(), created.end(), '/'), 2) << "not in the user's format: " << created;
    }

    auto shown = endOf(world.host({"show", "Leads", first.front()}));
    EXPECT_EQ(shown.status, 0) << shown.errors;
    EXPECT_TRUE(shown.output.starts_with("Leads " + first.front() + "\n\nLead Information\n  ")) << shown.output;

    struct Case {
        Arguments arguments;
        int status;
        std::string says;
    };
    const std::vector<Case> cases = {{{"list", "Nothing"}, 1, "there is no module"},
                                     {{"list", "Leads", "--view", "No such"}, 1, "no view \"No such\""},
                                     {{"list", "Leads", "--sort", "Nothing"}, 1, "no field \"Nothing\""},
                                     {{"list", "Leads", "--sort", "Company:up"}, 2, "--sort"},
                                     {{"list", "Leads", "--filter", "Company"}, 2, "--filter"},
                                     {{"list", "Leads", "--filter", "Company:before:x"}, 1, "offers no \"before\""},
                                     {{"list", "Leads", "--filter", "Created_Time:between:1"}, 2, "takes 2 values"},
                                     {{"list", "Leads", "--limit", "0"}, 2, "--limit"},
                                     {{"list", "Contacts"}, 1, "no record of this page is stored"},
                                     {{"show", "Leads", "12"}, 1, "no record 12 of Leads is stored"}};
    for (auto& one : cases) expectRefusal(endOf(world.host(one.arguments)), one.status, one.says);
}

}  // namespace tarvo::tests
