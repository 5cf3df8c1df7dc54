#include "platform/Text.h"
#include "tests/sandbox/RunningSandbox.h"

namespace tarvo::sandbox::tests {
namespace {

class MetadataTests : public RunningSandbox {
protected:
    Value ask(const std::string& modules, const std::string& path = "/crm/v5/getmetadatainfo") {
        return json(client->post(path, {{"profileid", "123"}, {"module", modules}}, token));
    }
    ValueList entries(const Value& answer) {
        auto result = at(at(answer, "response"), "result");
        return result.asList() ? *result.asList() : ValueList();
    }
    /// Returns the names of all modules as the parameter of the call.
    std::string allModules() {
        ValueList names;
        for (const auto& row : block(json(init()), "activeModules")) names.push_back(row.asList()->at(0));
        return json::write(names).value_or("");
    }
    static std::string cell(const Value& row, std::size_t index) { return row.asList()->at(index).textOr("?"); }
    static const ValueList& section(const Value& entry, std::size_t index) {
        static const ValueList none;
        const auto* sections = at(entry, "data").asList();
        return sections && index < sections->size() && sections->at(index).asList() ? *sections->at(index).asList()
                                                                                    : none;
    }
};

TEST_F(MetadataTests, LookupsKnowTheListThatTheyFill) {
    auto all = entries(ask(R"(["Contacts","Accounts"])"));
    ASSERT_EQ(all.size(), 2u);
    std::string list, field;
    for (const auto& row : section(all[1], 0))
        if (cell(row, 0) == "Contacts") list = cell(row, 2);
    for (const auto& row : section(all[0], 5))
        if (cell(row, 1) == "Account_Name") field = cell(row, 14);
    EXPECT_FALSE(list.empty());
    EXPECT_EQ(field, list);
}

TEST_F(MetadataTests, UnknownModulesFailAlone) {
    auto all = entries(ask(R"(["None","Calls"])"));
    ASSERT_EQ(all.size(), 2u);
    EXPECT_TRUE(at(all[0], "error").asList());
    EXPECT_FALSE(section(all[1], 5).empty());
    EXPECT_TRUE(entries(ask("")).empty());
}

}  // namespace
}  // namespace tarvo::sandbox::tests
