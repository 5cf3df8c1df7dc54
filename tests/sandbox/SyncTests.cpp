#include <map>

#include "tests/sandbox/RunningSandbox.h"

namespace tarvo::sandbox::tests {
namespace {

ValueList listOf(const Value& value) { return value.asList() ? *value.asList() : ValueList(); }

/// Returns what the control call of records returns for a record of the wire form.
Value mapOf(const Value& record) {
    ValueMap map;
    for (const auto& entry : listOf(record)) {
        const auto& pair = *entry.asList();
        auto values = listOf(pair.at(1));
        bool hasRows = !values.empty() && values.front().asList();
        if (hasRows)
            for (auto& value : values) value = mapOf(value);
        map.set(pair.at(0).textOr(""), hasRows ? Value(values) : pair.at(1));
    }
    return map;
}

/// A client that asks for changes and keeps the records of one module.
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
    void changeAtRandom(int seed, int changes, const std::string& module) {
        control("random", R"({"seed":)" + std::to_string(seed) + R"(,"changes":)" + std::to_string(changes) +
                              R"(,"modules":[")" + module + "\"]}");
    }

    /// Takes a page in, and returns how many records it has of each kind.
    std::array<std::size_t, 3> take(const Value& answer) {
        std::array<std::size_t, 3> counts{};
        for (std::size_t entry : {0, 1})
            for (const auto& row : listOf(at(entryOf(answer, entry), "data"))) {
                auto record = mapOf(row);
                bool isHere = records.contains(at(record, "id").textOr(""));
                if (entry == 0 || isHere) records[at(record, "id").textOr("")] = record;
                ++counts[entry];
            }
        auto rows = listOf(at(entryOf(answer, 2), "data"));
        std::string ids = rows.empty() ? "" : rows.front().asList()->front().textOr("") + ",";
        for (std::size_t end; (end = ids.find(',')) != std::string::npos; ids.erase(0, end + 1), ++counts[2])
            records.erase(ids.substr(0, end));
        return counts;
    }
    /// Asks for a whole round in pages; `between` runs after each.
    void sync(
        const std::string& module, std::size_t limit, const std::function<void()>& between = [] {}) {
        std::int64_t received = 0, first = 0;
        for (bool hasMore = true; hasMore; between()) {
            auto answer = page({{"lmt", std::to_string(watermark)},
                                {"count", std::to_string(received)},
                                {"mcount", std::to_string(limit)}},
                               module);
            if (received == 0) first = numberIn(answer, "responsetime");
            auto counts = take(answer);
            EXPECT_EQ(counts[0] + counts[1] + counts[2], static_cast<std::size_t>(numberIn(answer, "count")));
            for (std::size_t entry : {1, 2})
                for (auto name : {"count", "more_records", "responsetime"})
                    EXPECT_EQ(info(answer, name, entry), info(answer, name)) << name;
            received += numberIn(answer, "count");
            hasMore = info(answer, "more_records") == Value(true);
            ASSERT_GE(received, 0);
        }
        watermark = first;
    }
    void expectSameRecords(const std::string& module) {
        auto all = json(client->get("/control/records?module=" + module));
        auto held = listOf(at(all, "records"));
        EXPECT_EQ(records.size(), held.size());
        for (const auto& record : held) EXPECT_EQ(records[at(record, "id").textOr("")], record);
        for (const auto& id : listOf(at(all, "deleted"))) EXPECT_FALSE(records.contains(id.textOr("")));
    }

    std::map<std::string, Value> records;
    std::int64_t watermark = 0;
};

TEST_F(SyncTests, AClientThatAsksForChangesHasAllOfThem) {
    int seed = 0;
    for (std::string module : {"Leads", "Notes", "Events", "Quotes"}) {
        records.clear();
        watermark = 0;
        changeAtRandom(++seed, 40, module);
        for (std::size_t limit : {10'000, 7, 100, 33, 10'000}) {
            bool isQuiet = limit == 10'000;
            sync(module, limit, [&] {
                if (!isQuiet) changeAtRandom(++seed, 3, module);
            });
            changeAtRandom(++seed, 60, module);
        }
        sync(module, 1000);
        expectSameRecords(module);
        EXPECT_EQ(take(page({{"lmt", std::to_string(watermark)}}, module)), (std::array<std::size_t, 3>{}));
    }
}

TEST_F(SyncTests, AChangeIsAddedEditedOrDeletedAfterTheWatermark) {
    constexpr std::int64_t beforeTheSnapshot = 1, inTheSnapshot = 1'735'689'600'000;
    auto all = take(page({{"lmt", std::to_string(beforeTheSnapshot)}}));
    EXPECT_EQ(all, (std::array<std::size_t, 3>{250, 0, 0}));
    EXPECT_EQ(take(page({})), all);
    auto some = take(page({{"lmt", std::to_string(inTheSnapshot)}}));
    EXPECT_GT(some[0], 10u);
    EXPECT_GT(some[1], 0u);
    EXPECT_LT(some[0] + some[1], 200u);

    auto first = records.begin()->first, last = records.rbegin()->first;
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
