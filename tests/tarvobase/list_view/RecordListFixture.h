#pragma once

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/list_view/GetCustomViewsDataManager.h"
#include "tarvobase/list_view/GetListFilterRecords.h"
#include "tarvobase/list_view/sql/GetCVRecordsDBS.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/sql/CVRecordMapInDatabase.h"
#include "tarvobase/usecase/Usecase.h"
#include "tarvobase/value_objects/view/CustomViewInDatabase.h"
#include "tests/tarvobase/records/sql/RecordTableFixture.h"

namespace tarvo {

/// Leads in a real database. The view "offline" is kept in step; the view "online" needs the server.
class RecordListTest : public RecordTableTest {
protected:
    using Lists = GetListFilterRecords<>;

    void SetUp() override {
        RecordTableTest::SetUp();
        use(Naming::api);
        makeTable();
        for (auto table :
             {"Leads_CUSTOM_VIEW_RECORDS (cv_id TEXT, record TEXT, module_name TEXT, UNIQUE (cv_id, record))",
              "CUSTOM_VIEWS_METADATA (view_id, view_name, module_name, is_offline_supported, default_sort_by, "
              "default_sort_order, offline_query, offline_query_replace_info)"})
            adapter().createTable(std::string("CREATE TABLE ") + table);
        map = std::make_shared<CVRecordMapInDatabase>(configuration().databaseAdapter.get());
        settings = std::make_shared<UserDefaultsUtil>(std::make_shared<BrenUserDefaults>());
        storeView("offline", true);
        storeView("online", false);
        useNetwork();
    }
    /// Makes the table of leads anew in the naming in force.
    void makeTable() {
        using T = FieldDataType;
        adapter().dropTable("LeadsRecords");
        makeLeads({{"Company", T::text},
                   {"Status", T::picklist},
                   {"Owner", T::ownerlookup},
                   {"Amount", T::currency},
                   {"Size", T::integer}});
    }
    /// Installs a network that has no answers and has seen no requests.
    void useNetwork() {
        network = std::make_shared<ScriptedNetworkAdapter>();
        seenCalls_ = 0;
        auto parts = GetFilterRecordListDM::current()->parts;
        parts.networkService->setNetworkAdapter(network);
        manager = std::make_shared<GetFilterRecordListDM>(parts);
    }

    void storeView(const std::string& id, bool isOffline, const std::string& sortBy = "null",
                   const std::string& order = "asc") {
        adapter().execute("INSERT INTO CUSTOM_VIEWS_METADATA VALUES (?, ?, 'Leads', ?, ?, ?, NULL, NULL)",
                          ValueList{id, "Name of " + id, isOffline ? "true" : "false", sortBy, order});
    }
    /// Stores records with the ids from `first` on, and maps them to the view.
    void store(const std::string& view, int first, int count) {
        std::vector<ValueMap> rows;
        std::vector<std::string> ids;
        for (int i = first; i < first + count; ++i) {
            ids.push_back(std::to_string(i));
            rows.push_back({{"id", ids.back()}});
        }
        adapter().insertInto("LeadsRecords", rows);
        map->store(ids, view, "Leads");
    }
    static std::string bodyWith(const std::vector<std::string>& ids, const std::string& info) {
        std::vector<std::string> records;
        for (auto& id : ids) records.push_back(R"([["id",")" + id + R"("],["Company","of the server"]])");
        return R"({"response":{"result":[{"info":{"module":"Leads",)" + info + R"(},"data":[)" +
               text::join(records, ",") + "]}]}}";
    }
    void answer(const std::vector<std::string>& ids, const std::string& info) { network->answer(bodyWith(ids, info)); }
    static GetListFilterRecordsParams page(const std::string& view, std::optional<std::int64_t> from = {},
                                           std::optional<std::int64_t> limit = {},
                                           DataSource source = DataSource::both) {
        GetListFilterRecordsParams params;
        params.moduleName = "Leads", params.criteriaId = view;
        params.from = from, params.limit = limit, params.requestedSource = source;
        return params;
    }
    /// Returns all answers, each with its source, its ids (or their number if there are many), and "+" if the server
    /// has more.
    std::string ask(const GetListFilterRecordsParams& params) {
        std::vector<std::string> answers;
        auto lists = std::make_shared<Lists>(manager);
        lists->execute(Lists::Request(params), [&](auto response, auto failure) {
            if (failure) return answers.push_back(failureText(*failure));
            EXPECT_EQ(response->count, static_cast<std::int64_t>(response->records->size()));
            EXPECT_FALSE(response->groups);
            auto ids = response->count > 9 ? std::to_string(response->count) + " records" : idsOf(*response->records);
            answers.push_back(std::string(caseName(response->source())) + ": " + ids +
                              (response->moreRecords ? "+" : ""));
        });
        settle();
        return text::join(answers, " | ");
    }
    template <class Failure>
    static std::string failureText(const Failure& failure) {
        EXPECT_EQ(failure.which(), AppErrorCase::unknownError);
        return "failure " + std::string(failure.reason() ? caseName(*failure.reason()) : "without a reason");
    }
    static std::int64_t numberOf(const NetworkCall& call, const char* parameter) {
        return *call.params->find(parameter)->asInteger();
    }
    /// Returns "count/mcount" of all requests since the last call.
    std::string takeCounts() {
        std::vector<std::string> counts;
        auto calls = network->calls();
        for (auto i = std::exchange(seenCalls_, calls.size()); i < calls.size(); ++i)
            counts.push_back(std::to_string(numberOf(calls[i], "count")) + "/" +
                             std::to_string(numberOf(calls[i], "mcount")));
        return counts.empty() ? "not asked" : text::join(counts, " ");
    }
    /// Returns ids that are sorted as numbers, so that the newest comes first.
    static std::vector<std::string> ids(int first, int count) {
        std::vector<std::string> ids;
        for (int id = first; id > first - count; --id) ids.push_back(std::to_string(id));
        return ids;
    }
    /// Lets a page have only the records of this company.
    static GetListFilterRecordsParams ofCompany(const std::string& company, GetListFilterRecordsParams page) {
        page.filters.emplace({ColumnFilter{
            .column = "Company", .filterInputValues = {{company}}, .filterType = StringFilterTypes::isExactly}});
        return page;
    }
    std::int64_t mapped(const std::string& view) { return map->count(view, "Leads").value_or(-1); }
    std::int64_t stored() { return adapter().count("LeadsRecords", std::nullopt).value_or(-1); }

    std::shared_ptr<ScriptedNetworkAdapter> network;
    std::shared_ptr<GetFilterRecordListDM> manager;
    std::shared_ptr<CVRecordMapInDatabase> map;
    std::shared_ptr<UserDefaultsUtil> settings;

private:
    std::size_t seenCalls_ = 0;
};

}  // namespace tarvo
