#include <fstream>
#include <map>
#include <utility>

#include "tests/end_to_end/EndToEnd.h"

namespace tarvo::tests {

namespace {

/// Runs a command that must succeed, and returns its answer for programs.
Value answerOf(const EndToEnd& world, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "--json");
    auto ended = endOf(world.host(arguments));
    EXPECT_EQ(ended.status, 0) << arguments[1] << ": " << ended.errors;
    return lastLineOf(ended.output);
}

std::size_t countOf(const Value& answer) {
    auto changes = member(answer, "changes");
    return changes.asList() ? changes.asList()->size() : 99;
}

}  // namespace

TEST(ChangeCommands, ChangeRecordsOfflineAndSendThemLater) {
    EndToEnd world{{"--records", "5"}};
    answerOf(world, {"fields", "Leads"});
    auto port = std::exchange(world.port, 1);  // nobody listens there
    auto added = answerOf(world, {"add", "Leads", "Last_Name=O'Neill \"x\"", "--no-wait"});
    auto id = member(added, "recordId").textOr("");
    EXPECT_TRUE(id.starts_with("NEW_"));
    EXPECT_EQ(member(added, "isAccepted"), Value(false));
    answerOf(world, {"edit", "Leads", id, "City=Cork"});
    EXPECT_EQ(countOf(answerOf(world, {"pending"})), 2u);
    world.port = port;
    EXPECT_EQ(countOf(answerOf(world, {"drain"})), 0u);
    auto edited = answerOf(world, {"edit", "Leads", id, "City="});
    EXPECT_EQ(member(edited, "isAccepted"), Value(true));
    EXPECT_NE(member(edited, "recordId"), Value(id));
    auto held = member(world.controlled("/control/records?module=Leads&changed=true"), "records");
    ASSERT_TRUE(held.asList() && held.asList()->size() == 1);
    EXPECT_EQ(member(held.asList()->front(), "Last_Name"), Value("O'Neill \"x\""));
    EXPECT_EQ(member(held.asList()->front(), "City"), Value(""));
    answerOf(world, {"delete", "Leads", id});
    EXPECT_EQ(member(world.controlled("/control/records?module=Leads&changed=true"), "records"), Value(ValueList()));
}

TEST(ChangeCommands, TakeNotesOfflineOnARecordThatTheServerDoesNotKnow) {
    EndToEnd world{{"--records", "5"}};
    for (auto module : {"Accounts", "Notes"}) answerOf(world, {"fields", module});
    auto port = std::exchange(world.port, 1);
    auto idOf = [&](std::vector<std::string> arguments) {
        arguments.push_back("--no-wait");
        return member(answerOf(world, arguments), "recordId").textOr("");
    };
    auto sound = world.folder + "/sound";
    std::ofstream(sound) << "a sound";
    auto first = idOf({"add", "Accounts", "Account_Name=first"});
    auto written = idOf({"note", "Accounts", first, "a", "--title", "written"});
    auto spoken = idOf({"note", "Accounts", first, "a", "--title", "spoken", "--voice", sound});
    idOf({"edit", "Accounts", first, "Website=w"});
    for (auto& note : {written, spoken}) idOf({"edit", "Notes", note, "Note_Content=b"});
    idOf({"add", "Accounts", "Account_Name=second", "Parent_Account=" + first});
    EXPECT_EQ(countOf(answerOf(world, {"pending"})), 7u);
    world.port = port;
    EXPECT_EQ(countOf(answerOf(world, {"drain"})), 0u);

    std::map<std::string, Value> held;  // by name or title
    for (auto module : {"Accounts", "Notes"}) {
        auto records =
            member(world.controlled("/control/records?changed=true&module=" + std::string(module)), "records");
        for (auto& record : *records.asList())
            held[member(record, "Account_Name").textOr("") + member(record, "Note_Title").textOr("")] = record;
    }
    ASSERT_EQ(held.size(), 4u);
    auto firstId = member(held["first"], "id");
    EXPECT_EQ(member(held["first"], "Website"), Value("w"));
    EXPECT_EQ(member(held["second"], "Parent_Account"), firstId);
    for (auto title : {"written", "spoken"}) {
        EXPECT_EQ(member(held[title], "Parent_Id"), firstId) << title;
        EXPECT_EQ(member(held[title], "Note_Content"), Value("b")) << title;
    }
    auto spokenId = member(held["spoken"], "id").textOr("");
    EXPECT_EQ(world.content(world.home() + "/VoiceNotes/" + spokenId + ".wav"), "a sound");
    auto file = world.control->get("/control/files/" + spokenId);
    EXPECT_EQ(file ? file->body : "", "a sound");
    std::map<std::string, std::string> kinds;  // of the changes in their order, by record
    auto changes = member(world.controlled("/control/changes"), "changes");
    for (auto& change : *changes.asList())
        kinds[member(change, "id").textOr("")] += member(change, "kind").textOr("") + " ";
    EXPECT_EQ(member(changes.asList()->front(), "id"), firstId);
    for (auto& id : {firstId.textOr(""), spokenId, member(held["written"], "id").textOr("")})
        EXPECT_EQ(kinds[id], "add edit ");
}

TEST(ChangeCommands, CancelAndExplainWhatWaits) {
    EndToEnd world{{"--records", "5"}};
    answerOf(world, {"fields", "Leads"});
    world.port = 1;  // nobody listens there
    auto id = member(answerOf(world, {"add", "Leads", "Last_Name=x"}), "recordId").textOr("");
    answerOf(world, {"edit", "Leads", id, "City=Cork"});
    auto answer = answerOf(world, {"why"});
    auto reasons = member(answer, "changes");
    ASSERT_TRUE(reasons.asList() && reasons.asList()->size() == 2);
    auto first = member(reasons.asList()->front(), "why").textOr("");
    EXPECT_TRUE(first.starts_with("has had no answer of the server since ")) << first;
    EXPECT_EQ(member(reasons.asList()->back(), "why"), Value("waits for change 1, which adds a record that it names"));
    expectRefusals(world, {
                              {{"cancel", "1"}, 1, "the record is named by change 2, which must be cancelled with it"},
                              {{"cancel", "77"}, 1, "there is no change 77"},
                              {{"why", "77"}, 1, "there is no change 77"},
                          });
    EXPECT_EQ(countOf(answerOf(world, {"cancel", "1", "--with-waiters"})), 0u);
}

TEST(ChangeCommands, SayWhyTheyFail) {
    EndToEnd world{{"--records", "5"}};
    answerOf(world, {"fields", "Leads"});
    ASSERT_TRUE(world.control->postJson("/control/rules", R"({"module":"Leads","refuse":["add"]})"));
    expectRefusals(world, {
                              {{"add", "Leads"}, 2, "VALUES is required"},
                              {{"edit", "Leads", "1", "City"}, 2, "\"City\" is not of the form FIELD=VALUE"},
                              {{"edit", "Leads", "1", "Nope=x"}, 1, "Leads has no field \"Nope\""},
                              {{"add", "Nope", "A=b"}, 1, "there is no module \"Nope\""},
                              {{"retry", "77"}, 1, "there is no failed change 77"},
                              {{"add", "Leads", "Last_Name=x"}, 1, "was refused"},
                          });
    EXPECT_EQ(countOf(answerOf(world, {"retry"})), 1u);
    ASSERT_TRUE(world.control->postJson("/control/rules", R"({"module":"Leads"})"));
    EXPECT_EQ(countOf(answerOf(world, {"retry"})), 0u);
}

}  // namespace tarvo::tests
