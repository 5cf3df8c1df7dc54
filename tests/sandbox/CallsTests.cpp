#include "platform/Text.h"
#include "sandbox/data/StaticTables.h"
#include "tests/sandbox/RunningSandbox.h"
#include "tests/sandbox/Sql.h"

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

TEST_F(CallsTests, EveryHostNameIsServedUnderItsCertificate) {
    for (auto host : {"localhost", "sandbox.localhost", "mproxy.localhost"}) {
        Client other(host, port, certificates.authority);
        EXPECT_TRUE(other.get("/control/state")) << host;
    }
    Client stranger("stranger.localhost", port, certificates.authority);
    EXPECT_FALSE(stranger.get("/control/state"));
}

TEST_F(CallsTests, InitAnswerHasEveryBlockInItsForm) {
    auto answer = json(init());
    auto times = at(at(answer, "response"), "responseInfo");
    EXPECT_GT(at(times, "servertime").asInteger().value_or(0), 1'000'000'000'000);
    EXPECT_GT(at(times, "responsetime").asInteger().value_or(0), 1'000'000'000'000);

    EXPECT_GE(block(answer, "dateTimeFormat").size(), 2u);
    EXPECT_GT(block(answer, "tables").size(), 20u);
    auto modules = block(answer, "activeModules");
    EXPECT_GE(modules.size(), 19u);
    std::set<std::string> names, ids;
    for (const auto& row : modules) {
        ASSERT_EQ(row.asList()->size(), 7u);
        for (const auto& item : *row.asList()) EXPECT_TRUE(item.asText());
        names.insert(*row.asList()->at(0).asText());
        ids.insert(*row.asList()->at(6).asText());
        EXPECT_TRUE(text::toInteger(*row.asList()->at(4).asText()));
    }
    EXPECT_EQ(names.size(), modules.size());
    EXPECT_EQ(ids.size(), modules.size());

    auto details = block(answer, "userDetails");
    ASSERT_GE(details.size(), 9u);
    EXPECT_EQ(details[0], Value("42"));
    EXPECT_EQ(details[8].asList()->size(), 3u);

    int signedIn = 0;
    for (const auto& row : block(answer, "activeUsers")) {
        ASSERT_EQ(row.asList()->size(), 16u);
        signedIn += row.asList()->at(11) == Value(true);
        for (std::size_t i = 0; i < 16; ++i) EXPECT_EQ(row.asList()->at(i).asText() != nullptr, i != 11) << i;
    }
    EXPECT_EQ(signedIn, 1);

    auto settings = block(answer, "settings");
    ASSERT_EQ(settings.size(), 20u);
    for (std::size_t i = 0; i < 16; ++i) EXPECT_TRUE(settings[i].asText()) << i;
    for (const auto& row : *settings[16].asList()) {
        EXPECT_EQ(row.asList()->at(5).asList()->size() % 2, 0u);
        EXPECT_EQ(row.asList()->size(), row.asList()->at(0) == Value("Accounts") ? 7u : 6u);
    }
    for (const auto& row : block(answer, "VestraOrgs")) EXPECT_TRUE(row.asList()->at(2).asBool());
    for (const auto& row : block(answer, "companyInfo")) EXPECT_EQ(row.asList()->size(), 2u);
}

TEST_F(CallsTests, TheAccountOfTheTokenIsTheOneWhoAsks) {
    auto answer = json(client->post("/crm/v4/getappinitdata", {{"authtoken", "other-secret"}}));
    EXPECT_EQ(block(answer, "userDetails").at(0), Value("43"));
}

TEST_F(CallsTests, OneSeedGivesOneDataSet) {
    Accounts accounts(std::vector<Account>{{"42", token}});
    DataSet a(7, accounts, 0), b(7, accounts, 0), c(8, accounts, 0);
    auto describe = [](const DataSet& data) {
        std::string text;
        for (const auto& user : data.users) text += user.id + user.name();
        for (const auto& tag : data.tags) text += tag.id + tag.name;
        return text;
    };
    EXPECT_EQ(describe(a), describe(b));
    EXPECT_NE(describe(a), describe(c));
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

TEST_F(CallsTests, TableStatementsRunTwice) {
    Sql sql;
    for (auto naming : {Naming::column, Naming::api}) {
        auto statements = staticTables(naming, "600123");
        EXPECT_GT(statements.size(), staticTables(naming, "").size())
            << "tables of one organisation come under its name too";
        EXPECT_EQ(staticTables(naming, "x; DROP TABLE y").size(), staticTables(naming, "").size());
        for (int round = 0; round < 2; ++round)
            for (const auto& statement : statements) EXPECT_EQ(sql.run(statement), "") << statement;
    }
    EXPECT_EQ(sql.run("ALTER TABLE module_details ADD COLUMN table_creation_query TEXT"), "");
    for (int round = 0; round < 2; ++round)
        EXPECT_EQ(
            sql.run("INSERT OR REPLACE INTO MODULE_DETAILS (module_name, singular_name) VALUES ('Leads', 'Lead')"), "");
    EXPECT_EQ(sql.number("SELECT COUNT(*) FROM MODULE_DETAILS"), 1) << "a row of the same name is replaced";
}

}  // namespace
}  // namespace tarvo::sandbox::tests
