#include "tests/sandbox/RunningSandbox.h"

namespace tarvo::sandbox::tests {
namespace {

class CallsTests : public RunningSandbox {};

TEST_F(CallsTests, TokenAndPathDecideTheStatus) {
    struct {
        const char *path, *authorization, *parameter;
        int status;
    } rows[] = {
        {"/crm/v4/getappinitdata", "Nimbra-oauthtoken secret-of-42", "", 200},
        {"/crm/v4/getappinitdata", "secret-of-42", "", 200},
        {"/vestra/v2/getlumetappinitdata", "", "other-secret", 200},
        {"/crm/v4/getappinitdata?authtoken=other-secret", "", "", 200},
        {"/crm/v4/getappinitdata", "Nimbra-oauthtoken wrong", "", 401},
        {"/crm/v4/getappinitdata", "Nimbra-oauthtoken ", "", 401},
        {"/crm/v4/getappinitdata", "Nimbra-oauthtoken wrong", "other-secret", 401},
        {"/crm/v4/getappinitdata", "", "", 401},
        {"/crm/v1/getappinitdata", "secret-of-42", "", 404},
        {"/crm/v6/getappinitdata", "secret-of-42", "", 404},
        {"/crm/getappinitdata", "secret-of-42", "", 404},
        {"/other/v4/getappinitdata", "secret-of-42", "", 404},
        {"/crm/v4/nosuchcall", "secret-of-42", "", 404},
        {"/", "secret-of-42", "", 404},
    };
    for (const auto& row : rows) {
        Client::Form form;
        if (*row.parameter) form.emplace("authtoken", row.parameter);
        auto answer = client->post(row.path, form, row.authorization);
        ASSERT_TRUE(answer) << row.path;
        EXPECT_EQ(answer->status, row.status) << row.path << " " << row.authorization;
        auto errors = at(json(answer), "error");
        EXPECT_EQ(errors.asList() != nullptr, row.status != 200);
        if (row.status == 401) {
            EXPECT_EQ(at(errors.asList()->at(0), "code"), Value("AUTHENTICATION_FAILURE"));
        }
    }
}

TEST_F(CallsTests, TagsOfAModuleAndTheirChange) {
    auto rows = [&](const Client::Form& form) {
        return block(json(client->post("/crm/v4/getmoduletags", form, token)), "Leads");
    };
    auto tags = rows({{"module", "Leads"}, {"moduleAPI", "Leads"}});
    ASSERT_FALSE(tags.empty());
    for (const auto& row : tags)
        EXPECT_TRUE(row.asList()->size() == 2 && row.asList()->at(0).asText() && row.asList()->at(1).asText());
    EXPECT_EQ(rows({{"moduleAPI", "Leads"}}).size(), tags.size());

    ASSERT_EQ(client->postJson("/control/tags", R"({"module":"Leads","tags":[["1","Einzig"]]})")->status, 200);
    EXPECT_EQ(rows({{"module", "Leads"}}), ValueList{Value(ValueList{"1", "Einzig"})});
    for (auto wrong : {"{}", R"({"module":"None","tags":[]})", R"({"module":"Leads","tags":[["1"]]})"})
        EXPECT_EQ(client->postJson("/control/tags", wrong)->status, 400) << wrong;
    EXPECT_EQ(rows({{"module", "Leads"}}).size(), 1u);

    auto unknown = json(client->post("/crm/v4/getmoduletags", {{"module", "None"}}, token));
    auto entry = at(at(unknown, "response"), "result").asList()->at(0);
    EXPECT_TRUE(at(entry, "error").asList());
}

}  // namespace
}  // namespace tarvo::sandbox::tests
