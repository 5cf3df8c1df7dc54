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
