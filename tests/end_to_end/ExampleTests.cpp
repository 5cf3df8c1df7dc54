#include "platform/Text.h"
#include "tests/end_to_end/EndToEnd.h"

namespace tarvo::tests {

TEST(Example, DownloadsAnAccountAndListsItsLeads) {
    EndToEnd world({"--records", "30"});
    auto run = [&] {
        return endOf(std::make_unique<Process>(
            "example_LeadList", std::vector<std::string>{}, world.folder + "/example.log",
            std::vector<std::string>{"CRM_HOME=" + world.home(), "CRM_DOMAIN=localhost:" + std::to_string(world.port),
                                     "CRM_AUTHORITY=" + world.authority, "CRM_ACCOUNT=42", "CRM_TOKEN=token-of-42",
                                     "CRM_PASSPHRASE=right passphrase"}));
    };
    auto first = run();
    EXPECT_EQ(first.status, 0) << first.errors;
    EXPECT_TRUE(contains(first.output, "views of Leads\n")) << first.output;
    auto second = run();
    EXPECT_EQ(second.status, 0) << second.errors;
    auto lines = text::split(second.output, "\n");
    ASSERT_EQ(lines.size(), 6u) << "five leads without a download: " << second.output;
    std::size_t dates = 0;
    for (auto& line : lines) dates += contains(line, "/2026 ") || contains(line, "/2025 ");
    EXPECT_EQ(dates, 5u) << "in the account's format: " << second.output;
    EXPECT_TRUE(files::exists(world.home() + "/settings/my-crm.jsonl")) << "settings lie beside the database";
}

}  // namespace tarvo::tests
