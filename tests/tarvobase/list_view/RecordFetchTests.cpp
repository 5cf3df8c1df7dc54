#include "platform/Clock.h"
#include "tarvobase/list_view/GetRecordsUseCase.h"
#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/sql/FilterToWhereConverter.h"
#include "tests/tarvobase/NoticeListener.h"
#include "tests/tarvobase/records/sql/RecordTableFixture.h"

namespace tarvo {
namespace {

constexpr std::int64_t noon = 1709204400;  // 2024-02-29, 12:00 in Berlin
constexpr std::int64_t hour = 3600, midnight = noon - 12 * hour;

/// Keeps all callbacks as lines, in order.
class RecordsListener final : public GetRecordsUseCaseDelegate,
                              public NoticeListener<CommonErrorRelay>,
                              public NoticeListener<GetRecordsErrorRelay> {
public:
    using RecordsFetchDataManagerDelegate::record;
    void record(const Records& records, const RecordQuery&, const Value& miscData) override {
        lines.push_back(idsOf(records) + " " + miscData.toText().value_or(""));
    }
    void record(const std::optional<Record>& record, const std::string& recordID, const Module&,
                const Value& miscData) override {
        lines.push_back(recordID + ": " + (record ? record->getString("COMPANY") : "none") + " " +
                        miscData.toText().value_or(""));
    }
    void activityRecords(const Records& records, const RecordQuery&) override { lines.push_back(idsOf(records)); }
    std::vector<std::string> lines;

private:
    void noticed(const std::string& notice) override { lines.push_back(notice); }
};

class RecordFetchTest : public RecordTableTest {
protected:
    void SetUp() override {
        RecordTableTest::SetUp();
        platform::Clock::setTimeZone("Europe/Berlin");
        platform::Clock::set(platform::Clock::WallTime(std::chrono::seconds(noon)));
    }
    void TearDown() override {
        platform::Clock::release();
        platform::Clock::setTimeZone(std::nullopt);
        RecordTableTest::TearDown();
    }

    void makeActivities(const std::string& module) {
        using T = FieldDataType;
        std::vector<FieldMetadata> fields;
        for (auto& [name, type] : {std::pair("Created_Time", T::dateTime),
                                   {"Activity_Type", T::text},
                                   {"Status", T::picklist},
                                   {"Call_Status", T::picklist},
                                   {"Due_Date", T::date},
                                   {"Start_Date_Time", T::dateTime},
                                   {"End_Date_Time", T::dateTime},
                                   {"Call_Start_Time", T::dateTime}})
            fields.push_back(field(module, name, type));
        adapter().dropTable(module + "Records");
        makeModule(module, fields);
        auto add = [&](const std::string& kind, const std::string& id,
                       std::vector<std::pair<std::string, Value>> more) {
            if (module != "Activities" && module != kind) return;
            ValueMap row{{identifier("id"), id}, {identifier("Activity_Type"), kind}};
            for (auto& [name, value] : more) row.set(identifier(name), value);
            adapter().insertInto(module + "Records", row);
        };
        add("Tasks", "late", {{"Status", "In Progress"}, {"Due_Date", midnight - 24 * hour}});
        add("Tasks", "today", {{"Status", "Not Started"}, {"Due_Date", midnight}, {"Created_Time", noon}});
        add("Tasks", "done", {{"Status", "Completed"}, {"Due_Date", midnight - 24 * hour}});
        add("Events", "over", {{"Start_Date_Time", noon - 2 * hour}, {"End_Date_Time", noon - 1}});
        add("Events", "running", {{"Start_Date_Time", noon - hour}, {"End_Date_Time", noon + hour}});
        add("Events", "ahead", {{"Start_Date_Time", noon + 20 * hour}, {"End_Date_Time", noon + 21 * hour}});
        add("Calls", "missed", {{"Call_Status", "Scheduled"}, {"Call_Start_Time", noon - 1}});
        add("Calls", "planned", {{"Call_Status", "Scheduled"}, {"Call_Start_Time", noon}});
        add("Calls", "made", {{"Call_Status", "Completed"}, {"Call_Start_Time", noon - hour}});
    }
    Module moduleNamed(const std::string& name) {
        return Stores::current().modules()->getModuleByModuleName(name).value();
    }
    /// Returns the lines of the callbacks so far, joined by ", ".
    std::string lines() {
        settle();
        return text::join(std::exchange(listener->lines, {}), ", ");
    }

    /// Makes Leads, and a use case whose network service is scripted.
    std::shared_ptr<GetRecordsUseCase> leadsOverNetwork() {
        makeLeads({{"Company", FieldDataType::text}});
        auto service = std::make_shared<FetchRecordNetworkService>();
        service->setNetworkAdapter(network);
        auto database = configuration().databaseAdapter.get();
        auto manager = RecordsFetchDataManager::make({.recordPersistance = records,
                                                      .modulePersistance = Stores::current().modules(),
                                                      .fieldLists = FieldListAssembler::getFieldListDM(database),
                                                      .recordFetchNetworkService = service,
                                                      .recordIdAliases = Stores::current().recordIdAliases()});
        service->errorHandler = manager;
        auto usecase = GetRecordsUseCase::make(manager);
        usecase->delegate = listener;
        return usecase;
    }

    std::shared_ptr<ScriptedNetworkAdapter> network = std::make_shared<ScriptedNetworkAdapter>();
    std::shared_ptr<RecordsListener> listener = std::make_shared<RecordsListener>();
};

TEST_F(RecordFetchTest, ActivitiesAreClassifiedByStatusAndTime) {
    using F = GetColumnFilter;
    const std::tuple<F::Filters (*)(), const char*, const char*> cases[] = {
        {F::Tasks::open, "Tasks", "late today"}, {F::Tasks::closed, "Tasks", "done"},
        {F::Tasks::overdue, "Tasks", "late"},    {F::Events::upcoming, "Events", "ahead running"},
        {F::Events::past, "Events", "over"},     {F::Calls::scheduled, "Calls", "planned"},
        {F::Calls::overdue, "Calls", "missed"},  {F::Calls::upcoming, "Calls", "missed planned"},
        {F::Calls::completed, "Calls", "made"},
    };
    for (auto naming : {Naming::column, Naming::api}) {
        use(naming);
        makeActivities("Activities");
        for (auto& [filters, kind, ids] : cases) {
            FetchQuery query("ActivitiesRecords");
            query.filter(Criteria::equalTo(identifier("Activity_Type"), kind));
            query.filter(Criteria::custom(FilterToWhereConverter::getWhereStatement(filters()).value()));
            query.sortBy.push_back(SortDescriptor({.colName = identifier("id")}));
            auto rows = adapter().fetchObjects(query);
            ASSERT_TRUE(rows) << ids;
            EXPECT_EQ(idsOf(Record::fromRows(*rows, "Activities", configuration().fieldIdentifier)), ids);
        }
    }
}

TEST_F(RecordFetchTest, ReadsActivitiesOfTheSharedTableOrOfTheirOwnKindByKind) {
    for (auto naming : {Naming::column, Naming::api}) {
        use(naming);
        for (auto module : {"Activities", "Tasks", "Events", "Calls"}) makeActivities(module);
        auto usecase = GetRecordsUseCase::make();
        usecase->delegate = listener;
        auto sorted = [&](const std::string& module) {
            RecordQuery query{.module = moduleNamed(module)};
            query.columnsToSortWith.emplace({Sort<std::string>{identifier("id")}});
            return query;
        };
        for (auto module : {"Activities", "Tasks"}) {
            usecase->getActivitiesRecords(sorted(module), true);
            EXPECT_EQ(lines(), "late today ahead running missed planned") << module;
            usecase->getActivitiesRecords(sorted(module), false);
            EXPECT_EQ(lines(), "done over made");
            usecase->getActivityRecords(sorted(module), midnight, midnight + 24 * hour);
            EXPECT_EQ(lines(), "today over running made missed planned");
            auto narrow = sorted(module);
            narrow.customQuery = identifier("id") + " = 'late' OR " + identifier("id") + " = 'done'";
            usecase->getActivitiesRecords(narrow, true);
            EXPECT_EQ(lines(), "late") << "a condition of the caller's own";
        }
    }
}

TEST_F(RecordFetchTest, RecordsComeNewestFirstIfTheQueryNamesNoOrder) {
    makeActivities("Tasks");
    auto usecase = GetRecordsUseCase::make();
    usecase->delegate = listener;
    RecordQuery first{.module = moduleNamed("Tasks"), .limit = 1};
    usecase->getRecords(first, "mine");
    EXPECT_EQ(lines(), "today mine");
    usecase->getRecords({.module = {.moduleName = "Nothing"}});
    EXPECT_EQ(lines(), "failed ");
}

TEST_F(RecordFetchTest, ARecordIsReportedAsStoredAndThenAsTheServerHasIt) {
    auto usecase = leadsOverNetwork();
    auto answer = [](const std::string& info, const std::string& rest) {
        return R"({"response":{"result":[{"info":{"module":"Leads")" + info + "}" + rest + "}]}}";
    };
    const std::pair<std::string, const char*> cases[] = {
        {answer("", R"(,"data":[[["id","7"],["Company","Acme"]]])"), "7: none it, 7: Acme it"},
        {"<html>", "7: Acme it, parsingError"},
        {answer("", R"(,"error":["crmNO_PERMISSION","no"])"), "7: Acme it, parsingError"},
        {answer(R"(,"nodata":true)", ""), "7: Acme it, unableToConvertRecordFromDictionaryError"},
        {answer("", R"(,"data":[[["Company","Nobody's"]]])"), "7: Acme it, unableToGetIDForRecordError"},
        {answer("", R"(,"data":[[["id","7"],["Company","\"Zylker\""]]])"), "7: Acme it, 7: \"Zylker\" it"},
    };
    for (auto& [body, expected] : cases) {
        network->answer(body);
        usecase->getRecord(moduleNamed("Leads"), "7", "it");
        EXPECT_EQ(lines(), expected) << body;
    }
    network->fail(NetworkError::Kind::timeout);
    usecase->getRecord(moduleNamed("Leads"), "7");
    EXPECT_EQ(lines(), "7: \"Zylker\" , networkResponseError scripted");
    signIn("1001", std::nullopt);
    usecase->getRecord(moduleNamed("Leads"), "7");
    EXPECT_EQ(lines(), "7: \"Zylker\" , noAuthtoken 1001");
    auto call = network->calls().front();
    EXPECT_TRUE(call.request.url.ends_with("/crm/v4/products/getrecord")) << call.request.url;
    ValueMap expected{{"id", "7"}, {"module", "Leads"}, {"moduleAPI", "Leads_Api"}};
    EXPECT_EQ(call.params, expected);
    EXPECT_EQ(adapter().count("LeadsRecords", std::nullopt), 1);
}

TEST_F(RecordFetchTest, ARecordIsFoundByItsFormerIdAndTheServerIsAskedForItsOwn) {
    auto usecase = leadsOverNetwork();
    const std::string former = "NEW_000000001";
    auto get = [&] {
        usecase->getRecord(moduleNamed("Leads"), former, "it");
        return lines();
    };
    EXPECT_EQ(get(), former + ": none it, unableToConvertRecordFromDictionaryError");
    fillLeads({{{"ID", former}, {"COMPANY", "Mine"}}});
    EXPECT_EQ(get(), former + ": Mine it, " + former + ": Mine it");
    EXPECT_TRUE(network->calls().empty());

    ASSERT_TRUE(adapter().execute("UPDATE LeadsRecords SET ID = '42'", std::nullopt));
    ASSERT_TRUE(Stores::current().recordIdAliases()->store({former, "Leads", "42"}));
    network->answer(
        R"({"response":{"result":[{"info":{"module":"Leads"},"data":[[["id","42"],["Company","Server"]]]}]}})");
    EXPECT_EQ(get(), former + ": Mine it, " + former + ": Server it");
    EXPECT_EQ(network->calls().back().params->valueOf("id").textOr(""), "42");
    for (auto& found : {records->fetchRecord("Leads", former), records->fetchRecordsFor("Leads", former, {"COMPANY"})})
        EXPECT_EQ(found ? found->recordId() : "none", "42");
}

}  // namespace
}  // namespace tarvo
