#include <array>
#include <set>

#include "platform/Text.h"
#include "tests/sandbox/RunningSandbox.h"

namespace tarvo::sandbox::tests {
namespace {

ValueList listOf(const Value& value) { return value.asList() ? *value.asList() : ValueList(); }

/// A client that asks for changes.
class SyncTests : public RunningSandbox {
protected:
    Value page(const Client::Form& more, const std::string& module = "Leads") {
        Client::Form form{{"module", module}};
        form.insert(more.begin(), more.end());
        return json(client->post("/crm/v4/products/getsyncrecords", form, token));
    }
    static Value info(const Value& answer, std::string_view name, std::size_t entry = 0) {
        return at(at(entryOf(answer, entry), "info"), name);
    }
    static std::int64_t numberIn(const Value& answer, std::string_view name) {
        return info(answer, name).asInteger().value_or(-1);
    }
    void control(const std::string& call, const std::string& body) {
        auto answer = client->postJson("/control/" + call, body);
        ASSERT_EQ(answer->status, 200) << body << answer->body;
    }
    /// Returns how many records a page has of each kind, and keeps the ids of those that were added or edited.
    std::array<std::size_t, 3> take(const Value& answer) {
        std::array<std::size_t, 3> counts{};
        for (std::size_t kind : {0, 1})
            for (const auto& record : listOf(at(entryOf(answer, kind), "data"))) {
                ++counts[kind];
                for (const auto& entry : listOf(record))
                    if (entry.asList()->at(0) == Value("id")) ids.insert(entry.asList()->at(1).textOr(""));
            }
        auto rows = listOf(at(entryOf(answer, 2), "data"));
        auto deleted = rows.empty() ? "" : rows.front().asList()->front().textOr("");
        if (!deleted.empty()) counts[2] = text::split(deleted, ",").size();
        return counts;
    }

    std::set<std::string> ids;
};

TEST_F(SyncTests, AChangeIsAddedEditedOrDeletedAfterTheWatermark) {
    constexpr std::int64_t beforeTheSnapshot = 1, inTheSnapshot = 1'735'689'600'000;
    auto all = take(page({{"lmt", std::to_string(beforeTheSnapshot)}}));
    EXPECT_EQ(all, (std::array<std::size_t, 3>{250, 0, 0}));
    EXPECT_EQ(take(page({})), all);
    auto some = take(page({{"lmt", std::to_string(inTheSnapshot)}}));
    EXPECT_GT(some[0], 10u);
    EXPECT_GT(some[1], 0u);
    EXPECT_LT(some[0] + some[1], 200u);

    auto first = *ids.begin(), last = *ids.rbegin();
    auto after = [&](std::int64_t time) { return take(page({{"lmt", std::to_string(time)}})); };
    auto begin = numberIn(page({}), "responsetime");
    control("records", R"({"module":"Leads","add":[{"Last_Name":"a"},{"Last_Name":"b"}],"edit":[{"id":")" + first +
                           R"(","City":"x"}],"delete":[")" + last + "\"]}");
    auto middle = numberIn(page({}), "responsetime");
    EXPECT_GE(middle, begin + 4) << "each change takes a millisecond at least";
    EXPECT_EQ(after(begin), (std::array<std::size_t, 3>{2, 1, 1}));
    auto added =
        at(listOf(at(json(client->get("/control/records?module=Leads&changed=true")), "records")).back(), "id");
    control("records", R"({"module":"Leads","delete":[")" + first + "\",\"" + added.textOr("") + "\"]}");
    EXPECT_EQ(after(begin), (std::array<std::size_t, 3>{1, 0, 3}));
    EXPECT_EQ(after(middle), (std::array<std::size_t, 3>{0, 0, 2}));

    auto now = numberIn(page({}), "responsetime");
    control("clock", R"({"offsetMilliseconds":-86400000})");
    EXPECT_LT(numberIn(page({}), "responsetime"), now);
    control("records", R"({"module":"Leads","add":[{"Last_Name":"c"}]})");
    EXPECT_EQ(after(now), (std::array<std::size_t, 3>{1, 0, 0})) << "no change is lost to a clock that goes back";
}

TEST_F(SyncTests, TheControlCallSetsTimeAndEnd) {
    for (auto [time, isSame] : {std::pair("round", true), {"page", false}}) {
        control("sync", std::string(R"({"responsetime":")") + time + "\"}");
        auto first = page({{"lmt", "0"}, {"mcount", "100"}});
        auto next = page({{"lmt", "0"}, {"mcount", "100"}, {"count", "100"}});
        EXPECT_EQ(info(first, "responsetime") == info(next, "responsetime"), isSame) << time;
    }
    control("sync", R"({"stuck":true})");
    auto stuck = page({});
    EXPECT_EQ(info(stuck, "more_records"), Value(true));
    EXPECT_EQ(numberIn(stuck, "count"), 0);
    EXPECT_EQ(take(stuck), (std::array<std::size_t, 3>{}));

    for (auto [call, body] : {std::pair("sync", "[]"),
                              {"sync", R"({"responsetime":"day"})"},
                              {"sync", R"({"stuck":1})"},
                              {"random", R"({"seed":1})"},
                              {"random", R"({"seed":1,"changes":-1})"},
                              {"random", R"({"seed":1,"changes":1,"modules":["Activities"]})"},
                              {"random", R"({"seed":1,"changes":1,"account":"99"})"}})
        EXPECT_EQ(client->postJson(std::string("/control/") + call, body)->status, 400) << call << body;
    for (const Client::Form& wrong :
         {Client::Form{{"lmt", "x"}}, {{"lmt", "-1"}}, {{"count", "-1"}}, {{"mcount", "1.5"}}})
        EXPECT_TRUE(at(entryOf(page(wrong)), "error").asList()) << wrong.begin()->first;
    EXPECT_TRUE(at(entryOf(page({}, "EventInvitees")), "error").asList());
}

}  // namespace
}  // namespace tarvo::sandbox::tests
