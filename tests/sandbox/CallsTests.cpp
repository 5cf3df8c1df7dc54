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
        {"/crm/v6/getappinitdata", "secret-of-42", "", 404},
        {"/other/v4/getappinitdata", "secret-of-42", "", 404},
        {"/crm/v4/nosuchcall", "secret-of-42", "", 404},
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

}  // namespace
}  // namespace tarvo::sandbox::tests
