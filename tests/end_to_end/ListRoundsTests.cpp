#include <optional>

#include "tests/end_to_end/ChangeWorld.h"

namespace tarvo::tests {

namespace {

/// A view of leads with an order, and what it has at the server.
struct ListedView {
    const char *name, *sortBy, *direction;
    bool isWhole;  ///< whether it has all leads
    std::string id{};
};

/// A user who reads lists that change at the server all the time.
///
/// TARVO_RIG_ROUNDS sets the number of rounds, TARVO_RIG_SEED the seed of the first one.
class ListRounds : public ChangeWorld {
protected:
    void SetUp() override {
        beginWhole({"--records", "260", "--list-reset", "60"});
        file.emplace(world->databasePath(), "right passphrase");
        for (auto& view : views) {
            ValueMap map{{"name", view.name},     {"displayName", view.name},
                         {"sortBy", view.sortBy}, {"isAscending", view.direction == std::string("asc")},
                         {"isOffline", true},     {"columns", ValueList{"Last_Name", "Company"}}};
            if (!view.isWhole)
                map.set("criteria", ValueMap{{"field", "Email_Opt_Out"}, {"comparator", "equal"}, {"value", "false"}});
            auto body = json::write(ValueMap{{"module", "Leads"}, {"add", ValueList{map}}}).value_or("");
            auto answer = world->control->postJson("/control/views", body);
            ASSERT_TRUE(answer && answer->status == 200) << body << (answer ? answer->body : "");
            view.id = listOf(member(json::parse(answer->body).value(), "added")).at(0).textOr("");
        }
        auto line = ask("CVSync.sync", {{"moduleName", "Leads"}});
        ASSERT_EQ(member(*line, "name"), Value("CVSyncDidComplete"));
    }

    /// Returns the ids of a view's list at the server, in its order.
    std::vector<std::string> atServer(const ListedView& view) {
        auto answer = world->control->post("/crm/v4/products/getcvrecords",
                                           {{"cvid", view.id},
                                            {"module", "Leads"},
                                            {"count", "0"},
                                            {"mcount", "10000"},
                                            {"sort_by", view.sortBy},
                                            {"sort_order", view.direction}},
                                           "token-of-42");
        auto result = listOf(member(member(json::parse(answer->body).value_or(Value()), "response"), "result"));
        std::vector<std::string> ids;
        for (auto& row : listOf(member(result.at(0), "data")))
            for (auto& entry : listOf(row))
                if (listOf(entry).at(0) == Value("id")) ids.push_back(listOf(entry).at(1).textOr(""));
        return ids;
    }
    std::string sync(const ListedView& view) {
        auto line = ask("SyncListFilterRecords", {{"moduleName", "Leads"}, {"criteriaId", view.id}});
        return line ? member(member(member(*line, "response"), "status"), "case").textOr("no answer") : "ended";
    }
    /// Reads a page and returns the ids that the screen shows last, or nullopt if it failed.
    std::optional<std::vector<std::string>> read(const ListedView& view, std::size_t from, std::size_t limit) {
        send("GetListFilterRecords", {{"moduleName", "Leads"},
                                      {"criteriaId", view.id},
                                      {"from", static_cast<std::int64_t>(from)},
                                      {"limit", static_cast<std::int64_t>(limit)},
                                      {"columns", ValueList{"ID"}}});
        std::optional<std::vector<std::string>> ids;
        while (auto line = nextLine()) {
            if (member(*line, "event") == Value("onError")) ids.reset();
            if (member(*line, "event") != Value("onSuccess")) continue;
            ids.emplace();
            for (auto& record : listOf(member(member(*line, "response"), "records")))
                ids->push_back(member(record, "recordId").textOr(""));
        }
        return ids;
    }
    std::vector<std::string> readToTheEnd(const ListedView& view) {
        constexpr std::size_t page = 70;
        std::vector<std::string> all;
        while (auto ids = read(view, all.size(), page)) {
            all.insert(all.end(), ids->begin(), ids->end());
            if (ids->empty()) break;
        }
        return all;
    }
    /// Expects that the map of a view is the beginning of the server's list. Call it right after a sync.
    void expectBeginning(const ListedView& view) {
        std::set<std::string> mapped;
        for (auto& row : file->select("SELECT record FROM Leads_CUSTOM_VIEW_RECORDS WHERE cv_id = '" + view.id + "'"))
            mapped.insert(row["record"]);
        auto list = atServer(view);
        ASSERT_LE(mapped.size(), list.size()) << view.name;
        list.resize(mapped.size());
        for (auto& id : list) EXPECT_TRUE(mapped.contains(id)) << view.name << " lacks " << id;
    }
    void expectWhole(const ListedView& view) {
        auto shown = readToTheEnd(view), list = atServer(view);
        EXPECT_EQ(shown.size(), list.size()) << view.name;
        auto [here, there] = std::mismatch(shown.begin(), shown.end(), list.begin(), list.end());
        if (here != shown.end() && there != list.end())
            ADD_FAILURE() << view.name << " shows " << *here << " in place of " << *there << " at "
                          << here - shown.begin();
    }
    void changeAtServer(int changes) {
        control("random", json::write(ValueMap{{"seed", static_cast<std::int64_t>(random() % 1'000'000)},
                                               {"changes", changes},
                                               {"modules", ValueList{"Leads"}}})
                              .value_or(""));
    }
    int number(int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); }

    std::vector<ListedView> views = {
        {"newest", "", "desc", false},          {"names", "Last_Name", "asc", false},
        {"companies", "Company", "desc", true}, {"sizes", "No_of_Employees", "asc", false},
        {"scores", "Score", "desc", true},      {"revenues", "Annual_Revenue", "asc", true},
        {"states", "Status", "desc", false},    {"owners", "Owner", "asc", true},
        {"people", "Full_Name", "desc", true},  {"contacts", "Last_Contact", "asc", true},
        {"birthdays", "Birthday", "desc", true}};
    std::optional<EncryptedFile> file;
};

/// Faults of an answer with the changes of a list, none of which may change what is stored for good.
constexpr const char* listFaults[] = {
    R"("fault":"dropBefore")",
    R"("fault":"dropAfter")",
    R"("fault":"nonJson")",
    R"("fault":"errorEnvelope")",
    R"("fault":"errorEnvelope","status":503)",
    R"("fault":"entries","entries":3)",
    R"("fault":"entries","entries":5)",
    R"("fault":"noResponseTime")",
    R"("fault":"noNodata")",
    R"("fault":"delayAfter","milliseconds":20)",
};

TEST_F(ListRounds, AListIsTheServersListAfterEachSync) {
    auto setting = std::getenv("TARVO_RIG_ROUNDS");
    auto rounds = setting ? std::atoi(setting) : 5;
    auto seed = std::getenv("TARVO_RIG_SEED");
    random.seed(seed ? static_cast<unsigned>(std::atoi(seed)) : 7U);
    std::map<std::string, int> outcomes;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        for (auto& view : views) {
            if (number(3) == 0) read(view, static_cast<std::size_t>(number(300)), 60);
            if (number(3) == 0) changeAtServer(1 + number(6));
        }
        changeAtServer(1 + number(number(6) == 0 ? 120 : 12));
        for (auto& view : views) {
            if (number(4) == 0)
                world->setFault(R"({"call":"products/getsyncrecords","times":1,)" +
                                std::string(listFaults[static_cast<std::size_t>(number(std::size(listFaults)))]) + "}");
            ++outcomes[sync(view)];
            world->control->remove("/control/faults");
            ++outcomes[sync(view)];
            expectBeginning(view);
        }
        auto& read = views[static_cast<std::size_t>(number(static_cast<int>(views.size())))];
        expectWhole(read);
    }
    for (auto& view : views) {
        sync(view);
        expectWhole(view);
    }
    for (auto outcome : {"syncCompleted", "syncUptoDate", "syncFailed", "no answer"})
        EXPECT_GT(outcomes[outcome], 0) << outcome;
}

}  // namespace
}  // namespace tarvo::tests
