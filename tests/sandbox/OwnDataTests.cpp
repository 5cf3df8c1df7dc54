#include "sandbox/data/Generator.h"
#include "tests/sandbox/RunningSandbox.h"

namespace tarvo::sandbox::tests {
namespace {

/// Returns the first ten digits of the ids that an init answer gives its users.
std::string idPrefix(Sandbox& sandbox, const std::string& token, const std::string& organisation) {
    Request request;
    request.method = "POST";
    request.path = "/crm/v4/getappinitdata";
    request.authorization = token;
    request.organisation = organisation;
    auto answer = json::parse(sandbox.handle(request).body).value_or(Value());
    auto blocks = at(at(answer, "response"), "result");
    for (const auto& block : *blocks.asList())
        if (at(at(block, "info"), "module") == Value("activeUsers")) {
            auto users = at(block, "data");
            return users.asList()->front().asList()->front().textOr("").substr(0, 10);
        }
    return "";
}

std::string prefixOf(std::uint64_t seed) { return std::to_string(IdSequence::prefix(seed)); }

TEST(OwnData, FollowsTheAccountOrTheOrganisationThatIsChosen) {
    SandboxOptions options;
    options.accounts = {{"42", "a"}, {"43", "b"}};
    // Organisation ids of account 42 follow from its seed.
    DataSet data(options.seed + 1000, Accounts({{"42", ""}}), 1);
    auto second = data.organisations[1].id;
    struct {
        DataSharing sharing;
        std::uint64_t first, other, chosen;  // what is added to the seed
    } rows[] = {{DataSharing::everybody, 0, 0, 0},
                {DataSharing::account, 1000, 2000, 1000},
                {DataSharing::organisation, 1000, 2000, 1001}};
    for (auto& row : rows) {
        options.dataSharing = row.sharing;
        Sandbox sandbox(options, nullptr);
        EXPECT_EQ(idPrefix(sandbox, "a", ""), prefixOf(options.seed + row.first));
        EXPECT_EQ(idPrefix(sandbox, "b", ""), prefixOf(options.seed + row.other));
        EXPECT_EQ(idPrefix(sandbox, "a", second), prefixOf(options.seed + row.chosen));
    }
}

}  // namespace
}  // namespace tarvo::sandbox::tests
