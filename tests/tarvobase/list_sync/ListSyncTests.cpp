#include <random>

#include "platform/Describe.h"
#include "tarvobase/list_sync/SyncLFRecordNotificationDelegate.h"
#include "tarvobase/list_sync/SyncListFilterRecords.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tests/tarvobase/list_view/RecordListFixture.h"

namespace tarvo {
namespace {

std::string textOf(const SyncLFRecordCompletionStatus& status) {
    return std::string(caseName(status.which)) + (status.isPartiallySaved ? " partially" : "");
}

class ListSyncLog final : public SyncLFRecordNotificationDelegate {
public:
    void listSynced(const std::string& module, const std::string& view,
                    const SyncLFRecordCompletionStatus& status) override {
        EXPECT_TRUE(MainQueue::shared()->isCurrent());
        notices.push_back(module + " " + view + " " + textOf(status));
    }
    std::vector<std::string> notices;
};

/// One list of an answer: records or ids.
std::string entryOf(const std::string& data, const std::string& info = "") {
    return R"({"info":{"module":"Leads","responsetime":900)" + info + R"(},"data":[)" + data + "]}";
}
std::string bodyOf(const std::vector<std::string>& entries) {
    return R"({"response":{"result":[)" + text::join(entries, ",") + "]}}";
}
std::string leadOf(const std::string& id, const std::string& company = "new") {
    return R"([["id",")" + id + R"("],["Company",")" + company + R"("]])";
}
std::string changesOf(const std::string& added, const std::string& modified = "", const std::string& deleted = "",
                      const std::string& moved = "", const std::string& info = R"(,"nodata":false)") {
    auto idRow = [](const std::string& ids) { return ids.empty() ? "" : R"([")" + ids + R"("])"; };
    return bodyOf({entryOf(added, info), entryOf(modified), entryOf(idRow(deleted)), entryOf(idRow(moved))});
}

class ListSyncTest : public RecordListTest {
protected:
    void SetUp() override {
        RecordListTest::SetUp();
        BrenNotificationCenter::shared().add<SyncLFRecordNotificationDelegate>(log);
    }
    /// Returns the status of a sync, or "no answer".
    std::string sync(const std::string& view = "offline") {
        auto service = std::make_shared<SyncListFilterRecordNS>();
        service->setNetworkAdapter(network);
        auto usecase =
            std::make_shared<SyncListFilterRecords>(SyncListFilterRecordDM::make(Stores::current(), service));
        SyncListFilterRecords::Request request;
        request.moduleName = "Leads", request.criteriaId = view;
        std::string answer = "no answer";
        usecase->execute(request, [&](auto response, auto) { answer = textOf(response->status); });
        settle();
        return answer;
    }
    std::string sync(const std::string& body, const std::string& view) {
        network->answer(body);
        return sync(view);
    }
    /// Lists records whose companies are their ids, as a first page does.
    void begin(int count, bool hasMore) {
        adapter().deleteAllObjects("LeadsRecords");
        map->delete_("offline", "Leads");
        store("offline", 11, count);
        settings->setListFilterHasMoreRecord(hasMore, "Leads", "offline");
        settings->setListFilterHasLaterPages(false, "Leads", "offline");
        settings->setListFilterRecordSyncTime(500, "Leads", "offline");
    }
    std::string listed() {
        auto rows = adapter().fetchObjects(
            "SELECT record FROM Leads_CUSTOM_VIEW_RECORDS WHERE cv_id = 'offline' ORDER BY CAST(record AS INTEGER)",
            std::nullopt);
        return idsIn(*rows);
    }
    std::string storedIds() {
        return idsIn(*adapter().fetchObjects("SELECT id FROM LeadsRecords ORDER BY CAST(id AS INTEGER)", std::nullopt));
    }
    static std::string idsIn(const Rows& rows) {
        std::vector<std::string> ids;
        for (auto row : rows) ids.emplace_back(row.cell(0).asText().value_or("?"));
        return text::join(ids, " ");
    }
    std::string position() {
        auto time = settings->getListFilterRecordSyncTime("Leads", "offline");
        return (time ? std::to_string(*time) : "never") +
               (settings->getListFilterHasMoreRecord("Leads", "offline") ? " more" : "");
    }

    std::shared_ptr<ListSyncLog> log = std::make_shared<ListSyncLog>();
};

TEST_F(ListSyncTest, ChangesGoInAsFarAsTheStoredListReaches) {
    // The view lists the newest first, so the last of the stored records is 11.
    const std::tuple<bool, std::string, const char*, const char*, const char*> cases[] = {
        {true, changesOf(leadOf("12") + "," + leadOf("05")), "syncCompleted partially", "11 12 13", "11 12 13"},
        {false, changesOf(leadOf("15") + "," + leadOf("05")), "syncCompleted", "05 11 12 13 15", "05 11 12 13 15"},
        {true, changesOf("", leadOf("12") + "," + leadOf("03")), "syncCompleted partially", "11 12 13", "11 12 13"},
        {true, changesOf("", leadOf("11")), "syncCompleted partially", "12 13", "11 12 13"},
        {true, changesOf("", leadOf("11") + "," + leadOf("12") + "," + leadOf("13")), "syncCompleted partially", "",
         "11 12 13"},
        {true, changesOf("", "", "12", "13"), "syncCompleted partially", "11", "11 13"},
        {false, changesOf(leadOf("14"), leadOf("14"), "14", "12,14"), "syncCompleted", "11 13", "11 12 13"},
    };
    for (auto& [hasMore, body, status, list, table] : cases) {
        SCOPED_TRACE(body);
        begin(3, hasMore);
        EXPECT_EQ(sync(body, "offline"), status);
        EXPECT_EQ(listed(), list);
        EXPECT_EQ(storedIds(), table);
        EXPECT_EQ(position(), std::string("900") + (hasMore ? " more" : ""));
    }
    begin(3, true);
    sync(changesOf("", leadOf("12", "theirs")), "offline");
    EXPECT_EQ(json::write(*network->calls().back().params),
              R"({"cvid":"offline","module":"Leads","moduleAPI":"Leads_Api","cvName":"Name of offline","count":0,)"
              R"("sort_by":"id","sort_order":"desc","mcount":1000,"lmt":500})");
    EXPECT_EQ(where("Company", "theirs"), "12");
    EXPECT_EQ(log->notices.back(), "Leads offline syncCompleted partially");
}

TEST_F(ListSyncTest, AnAnswerSaysHowTheListStands) {
    const auto none = R"(,"nodata":true)";
    const auto noTime = [](std::string body) {
        for (auto at = body.find(R"("responsetime":900)"); at != std::string::npos;
             at = body.find(R"("responsetime":900)"))
            body.replace(at, 18, R"("x":1)");
        return body;
    };
    const auto withAnswerTime = [](std::string body, const std::string& times) {
        return body.substr(0, body.size() - 2) + R"(,"responseInfo":{)" + times + "}}}";
    };
    const auto more = R"(,"more_records":true)", reset = R"(,"resetLocal":true)";
    auto four = changesOf(leadOf("14"));
    const std::tuple<const char*, std::string, const char*, const char*, const char*> cases[] = {
        {"no data", changesOf("", "", "", "", none), "syncUptoDate", "11 12 13", "900"},
        {"no nodata", changesOf("", "", "", "", ""), "syncUptoDate", "11 12 13", "900"},
        {"no changes", changesOf(""), "syncCompleted", "11 12 13", "900"},
        {"rows beside nodata", changesOf(leadOf("14"), "", "", "", none), "syncCompleted", "11 12 13 14", "900"},
        {"a reset", changesOf(leadOf("14"), "", "11", "", reset), "syncFailed", "", "500 more"},
        {"a second page", changesOf(leadOf("14"), "", "", "", more), "syncFailed", "", "500 more"},
        {"no time", noTime(four), "syncCompleted", "11 12 13 14", "500"},
        {"the answer's time", withAnswerTime(noTime(four), R"("responsetime":800,"servertime":700)"), "syncCompleted",
         "11 12 13 14", "800"},
        {"the server's time", noTime(changesOf(leadOf("14"), "", "", "", R"(,"servertime":700)")), "syncCompleted",
         "11 12 13 14", "700"},
        {"ids that are no text", bodyOf({entryOf(leadOf("14")), entryOf(""), entryOf("[12]"), entryOf("13")}),
         "syncCompleted", "11 12 13 14", "900"},
        {"three entries", bodyOf({entryOf(leadOf("14")), entryOf(""), entryOf("")}), "syncFailed", "11 12 13", "500"},
        {"five entries", bodyOf({entryOf(""), entryOf(""), entryOf(""), entryOf(""), entryOf("")}), "syncFailed",
         "11 12 13", "500"},
        {"a refused entry",
         bodyOf({entryOf(leadOf("14")), entryOf(""), R"({"info":{"module":"Leads"},"error":[{"code":"X"}]})",
                 entryOf("")}),
         "syncFailed", "11 12 13", "500"},
        {"another module",
         R"({"response":{"result":[{"info":{"module":"Deals"},"data":[]},)" + entryOf("") + "," + entryOf("") + "," +
             entryOf("") + "]}}",
         "syncFailed", "11 12 13", "500"},
        {"no JSON", "<html>", "syncFailed", "11 12 13", "500"},
    };
    for (auto& [what, body, status, list, at] : cases) {
        SCOPED_TRACE(what);
        begin(3, false);
        EXPECT_EQ(sync(body, "offline"), status);
        EXPECT_EQ(listed(), list);
        EXPECT_EQ(position(), at);
        EXPECT_EQ(log->notices.back(), "Leads offline " + std::string(status));
    }
    EXPECT_EQ(where("Company", "new"), "") << "the last answer was none";
}

TEST_F(ListSyncTest, AListThatIsNotHereHasNoAnswer) {
    EXPECT_EQ(sync("offline"), "no answer") << "never read";
    settings->setListFilterRecordSyncTime(500, "Leads", "none");
    EXPECT_EQ(sync("none"), "no answer") << "no such view";
    EXPECT_TRUE(network->calls().empty());
    EXPECT_TRUE(log->notices.empty());
}

TEST_F(ListSyncTest, AnAnswerForAnotherStateOfTheListStoresNothing) {
    begin(3, true);
    network->beforeAnswer = [&] { settings->setListFilterRecordSyncTime(600, "Leads", "offline"); };
    EXPECT_EQ(sync(changesOf(leadOf("12", "theirs"), "", "11"), "offline"), "syncFailed") << "a page came meanwhile";
    EXPECT_EQ(listed(), "11 12 13");
    begin(3, true);
    network->beforeAnswer = [&] {
        Stores::current().customViews()->updateSortfield({"Company", true}, "offline", "Leads");
    };
    EXPECT_EQ(sync(changesOf("", "", "11"), "offline"), "syncFailed") << "the order has changed";
    EXPECT_EQ(storedIds(), "11 12 13");
}

TEST_F(ListSyncTest, AChangeThatMayHaveShiftedALaterPageEmptiesTheList) {
    begin(3, true);
    answer({"10"}, R"("more_records":true,"servertime":800)");
    ask(page("offline", 0, 10));
    EXPECT_EQ(position(), "500 more") << "the time of a list is that of its first page";
    EXPECT_EQ(sync(changesOf(leadOf("14")), "offline"), "syncCompleted partially");
    EXPECT_EQ(listed(), "10 11 12 13 14");
    answer({"9"}, R"("more_records":true)");
    ask(page("offline", 0, 10));
    EXPECT_EQ(sync(changesOf("", leadOf("12")), "offline"), "syncFailed");
    EXPECT_EQ(listed(), "");
}

/// A server's list in memory: what is in it, and in which order the client reads it.
struct ModelList {
    struct Lead {
        std::optional<std::string> value;
        bool isListed = true;
    };
    std::map<std::string, Lead> leads;
    bool isAscending = true, isNumber = false;

    static double numberOf(const std::string& text) { return std::stod(text); }
    bool isBefore(const std::string& a, const std::string& b) const {
        auto& x = leads.at(isAscending ? a : b).value;
        auto& y = leads.at(isAscending ? b : a).value;
        if (x.has_value() != y.has_value()) return !x;
        if (x && isNumber && numberOf(*x) != numberOf(*y)) return numberOf(*x) < numberOf(*y);
        if (x && !isNumber && text::asciiLowercase(*x) != text::asciiLowercase(*y))
            return text::asciiLowercase(*x) < text::asciiLowercase(*y);
        return a > b;
    }
    std::vector<std::string> list() const {
        std::vector<std::string> ids;
        for (auto& [id, lead] : leads)
            if (lead.isListed) ids.push_back(id);
        std::sort(ids.begin(), ids.end(), [&](auto& a, auto& b) { return isBefore(a, b); });
        return ids;
    }
};

/// The law of lists: whatever happens, the map is the beginning of the server's list.
TEST_F(ListSyncTest, TheStoredListAlwaysBeginsTheServersList) {
    struct Order {
        const char *field, *direction;
        std::vector<const char*> values;
        bool isNumber = false;
    };
    const Order orders[] = {
        {"null", "asc", {"x"}},
        {"Company", "asc", {"b", "B", "a", "Zoe", "\xC3\xA9"}},
        {"Company", "desc", {"b", "B", "a", "Zoe"}},
        {"Status", "asc", {"Open", "Closed", "Unknown"}},
        {"Status", "desc", {"Open", "Closed", "Unknown"}},
        {"Size", "asc", {"1", "2", "10", "-3"}, true},
        {"Size", "desc", {"1", "2", "10", "-3"}, true},
        {"Amount", "asc", {"1.5", "1.25", "100"}, true},
        {"Owner", "desc", {"Ann", "bob", "Cy"}},
        {"Owner", "asc", {"Ann", "bob", "Cy"}},
    };
    std::mt19937 random(20);
    auto number = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
    int cuts = 0, kept = 0;
    for (auto& order : orders) {
        SCOPED_TRACE(std::string(order.field) + " " + order.direction);
        std::string view = std::string(order.field) + order.direction, field = order.field;
        storeView(view, true, order.field, order.direction);
        ModelList server{.isAscending = order.direction == std::string("asc"), .isNumber = order.isNumber};
        auto anyValue = [&]() -> std::optional<std::string> {
            return number(4) == 0 || field == "null"
                       ? std::nullopt
                       : std::optional<std::string>(
                             order.values[static_cast<std::size_t>(number(static_cast<int>(order.values.size())))]);
        };
        int lastId = 100;
        for (int i = 0; i < 30; ++i) server.leads[std::to_string(++lastId)] = {anyValue(), number(5) != 0};
        auto client = server;  // as of the last sync
        auto wire = [&](const std::string& id) {
            auto& value = server.leads.at(id).value;
            auto entry = value ? R"(,[")" + field + R"(",")" + *value + "\"" +
                                     (field == "Owner" ? ",\"" + *value + "\"" : "") + "]"
                               : "";
            return R"([["id",")" + id + "\"]" + entry + "]";
        };
        std::int64_t time = 1000;
        for (int step = 0; step < 25 && !HasFailure(); ++step) {
            for (int change = number(6); change > 0; --change) {
                auto chosen = std::next(server.leads.begin(), number(static_cast<int>(server.leads.size())));
                auto kind = number(5);
                if (kind == 0)
                    server.leads[std::to_string(++lastId)] = {anyValue(), true};
                else if (kind == 1)
                    server.leads.erase(chosen);
                else if (kind == 2)
                    chosen->second.isListed = !chosen->second.isListed;
                else
                    chosen->second.value = anyValue();
            }
            std::vector<std::string> added, modified, deleted, moved;
            for (auto& [id, lead] : server.leads) {
                auto former = client.leads.find(id);
                bool was = former != client.leads.end() && former->second.isListed;
                bool isChanged = former == client.leads.end() || former->second.value != lead.value;
                if (lead.isListed && !was) added.push_back(wire(id));
                if (lead.isListed && was && isChanged) modified.push_back(wire(id));
                if (!lead.isListed && was) moved.push_back(id);
            }
            for (auto& [id, lead] : client.leads)
                if (lead.isListed && !server.leads.contains(id)) deleted.push_back(id);
            bool fails = number(4) == 0;
            auto body = changesOf(text::join(added, ","), text::join(modified, ","), text::join(deleted, ","),
                                  text::join(moved, ","), R"(,"servertime":1)");
            if (settings->getListFilterRecordSyncTime("Leads", view))
                sync(fails ? "<html>" : std::string(body).replace(body.find("900"), 3, std::to_string(++time)), view);
            if (!fails) client = server;
            auto list = server.list();
            auto held = map->count(view, "Leads").value_or(0);
            if (!fails && number(2) == 0 && settings->getListFilterHasMoreRecord("Leads", view)) {
                auto end = std::min<std::int64_t>(held + 7, static_cast<std::int64_t>(list.size()));
                std::vector<std::string> rows;
                for (auto i = held; i < end; ++i) rows.push_back(wire(list[static_cast<std::size_t>(i)]));
                network->answer(
                    bodyOf({R"({"info":{"module":"Leads","servertime":)" + std::to_string(++time) +
                            R"(,"more_records":)" + (end < static_cast<std::int64_t>(list.size()) ? "true" : "false") +
                            R"(},"data":[)" + text::join(rows, ",") + "]}"}));
                ask(page(view, {}, 1000));
            }
            if (fails) continue;
            auto rows =
                adapter().fetchObjects("SELECT record FROM Leads_CUSTOM_VIEW_RECORDS WHERE cv_id = ?", ValueList{view});
            std::set<std::string> mapped;
            for (auto row : *rows) mapped.emplace(row.cell(0).asText().value_or("?"));
            ASSERT_EQ(mapped, std::set<std::string>(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(std::min(
                                                                                     mapped.size(), list.size()))))
                << "step " << step;
            bool hasMore = settings->getListFilterHasMoreRecord("Leads", view);
            if (!hasMore) {
                EXPECT_EQ(mapped.size(), list.size()) << "step " << step;
            }
            cuts += hasMore && mapped.size() < list.size();
            kept += !mapped.empty();
        }
    }
    EXPECT_GT(cuts, 40);
    EXPECT_GT(kept, 100);
}

}  // namespace
}  // namespace tarvo
