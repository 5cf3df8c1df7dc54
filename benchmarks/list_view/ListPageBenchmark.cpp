#include <algorithm>
#include <array>
#include <map>

#include "benchmarks/Support.h"
#include "benchmarks/kelva/HandWritten.h"
#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/database_layer/KelvaDatabasePersistance.h"
#include "tarvobase/list_view/sql/GetCVRecordsDBS.h"
#include "tarvobase/metadata/ModuleInfo.h"
#include "tarvobase/records/sql/CVRecordMapInDatabase.h"
#include "tarvobase/usecase/Usecase.h"
#include "tarvobase/value_objects/view/CustomView.h"

// Measures a page of a list: 200 records by 20 columns out of 100,000 records of 60 columns, all of them in the view's
// map. The floor is the quickest of the hand-written queries for the same rows.
namespace tarvo::benchmarks {

namespace {

const std::string key(32, 'k'), salt(16, 's');
constexpr std::size_t recordCount = 100'000, batch = 10'000, fieldCount = 60, shownFields = 20;

/// The order of a view, and the column by which the hand-written query sorts.
struct Order {
    const char* field;
    const char* column;  // the one that it sorts by
};
constexpr std::array<Order, 3> orders = {Order{"Company", "Company"}, Order{"Status", "Status"},
                                         Order{"Owner", "Owner_LOOKUP"}};

std::string fieldName(std::size_t field) {
    constexpr std::array<const char*, 4> first = {"id", "Company", "Status", "Owner"};
    return field < first.size() ? first[field] : "Field_" + std::to_string(field);
}
FieldDataType typeOf(std::size_t field) {
    return field == 2 ? FieldDataType::picklist : field == 3 ? FieldDataType::ownerlookup : FieldDataType::text;
}

std::vector<std::string> columns() {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < fieldCount; ++i) names.push_back(fieldName(i));
    names.push_back("Owner_LOOKUP");
    return names;
}

std::string value(std::size_t record, std::size_t field) {
    switch (field) {
        case 0:
            return std::to_string(1'000'000'000'000 + record * 7919 % recordCount);
        case 1:
            return (record % 2 ? "Company " : "company ") + std::to_string(record * 104'729 % 99'991);
        case 2:
            return "Status " + std::to_string(record * 31 % 7);
        case 3:
        case fieldCount:
            return (field == 3 ? "4077000" : "Owner ") + std::to_string(record * 31 % 400);
        default:
            return "value " + std::to_string(record % 97) + (field % 10 == 0 ? " of a longer text" : "");
    }
}

Table rowsFrom(std::size_t first, std::size_t count) {
    Table rows(count);
    for (std::size_t row = 0; row < count; ++row)
        for (std::size_t i = 0; i <= fieldCount; ++i) rows[row].push_back(value(first + row, i));
    return rows;
}

ModuleInfo moduleInfo() {
    std::vector<FieldMetadata> fields(fieldCount);
    for (std::size_t i = 0; i < fieldCount; ++i) {
        fields[i].fieldAPIName = fieldName(i);
        fields[i].fieldType = typeOf(i);
    }
    std::vector<PicklistMetadata> picklist(7);
    for (int i = 0; i < 7; ++i) {
        picklist[static_cast<std::size_t>(i)].fieldActualValue = "Status " + std::to_string(i);
        picklist[static_cast<std::size_t>(i)].fieldAPIName = "Status";
        picklist[static_cast<std::size_t>(i)].position = 7 - i;
    }
    ModuleInfo info;
    info.module.moduleName = info.module.apiName = "Leads";
    info.metadata = FieldList("Leads", std::move(fields), std::move(picklist));
    return info;
}

CustomView viewOf(const Order& order) {
    CustomView view;
    view.viewID = "4077";
    view.moduleName = "Leads";
    view.sortBy = order.field;
    view.sortOrder = "asc";
    return view;
}

GetListFilterRecordsParams request(std::int64_t from) {
    GetListFilterRecordsParams request;
    request.moduleName = "Leads";
    request.criteriaId = "4077";
    request.columns.emplace();
    for (std::size_t i = 0; i < shownFields - 1; ++i) request.columns->push_back(fieldName(i));
    request.from = from;
    request.limit = 200;
    return request;
}

std::string recordTable() {
    std::string sql = "CREATE TABLE LeadsRecords (_id INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT UNIQUE";
    for (auto& name : columns())
        if (name != "id") sql += ", " + name + " TEXT COLLATE NOCASE";
    return sql + ")";
}

/// The databases of the library and of the floor with equal rows. They are made once for all orders.
struct Sides {
    Folder folder;
    std::shared_ptr<KelvaDatabasePersistance> adapter =
        std::make_shared<KelvaDatabasePersistance>(StorageLocation::onDisk(folder.path + "/ours.db"));
    kelva::benchmarks::HandWritten hand{folder.path + "/hand.db", "x'" + text::hex(key) + text::hex(salt) + "'"};
    std::shared_ptr<CVRecordMapInDatabase> map;

    Sides() {
        platform::setLogSink([](std::string_view) {});
        if (!adapter->registerDB("a passphrase").ok()) std::abort();
        auto& configuration = CommonConfigration::sharedInstance();
        configuration.databaseAdapter = adapter;
        configuration.fieldIdentifier = FieldIdentifier::fieldAPINameIdentifier();
        map = std::make_shared<CVRecordMapInDatabase>(adapter);
        for (auto& sql : {recordTable(), std::string("CREATE TABLE Leads_CUSTOM_VIEW_RECORDS (cv_id TEXT, record TEXT, "
                                                     "module_name TEXT, UNIQUE (cv_id, record))")}) {
            adapter->createTable(sql);
            hand.run(sql.c_str());
        }
        for (std::size_t first = 0; first < recordCount; first += batch) store(rowsFrom(first, batch));
        for (auto& order : orders)
            hand.run(
                ("CREATE INDEX by_" + std::string(order.field) + " ON LeadsRecords (" + terms(order) + ")").c_str());
    }
    ~Sides() {
        CommonConfigration::sharedInstance().databaseAdapter = nullptr;
        adapter->deregisterDB();
    }
    static std::string terms(const Order& order) {
        return std::string(order.column) + " COLLATE NOCASE ASC, id COLLATE NOCASE DESC";
    }

private:
    void store(const Table& rows) {
        auto names = columns();
        adapter->insertInto("LeadsRecords", TableSource(names, rows));
        hand.insert("LeadsRecords", names, rows);
        std::vector<std::string> ids;
        Table mapped;
        for (auto& row : rows) {
            ids.push_back(row.front());
            mapped.push_back({"4077", row.front(), "Leads"});
        }
        map->store(ids, "4077", "Leads");
        hand.insert("Leads_CUSTOM_VIEW_RECORDS", {"cv_id", "record", "module_name"}, mapped);
    }
};

/// Returns two hand-written queries: one reads the records at once, the other their row ids first.
std::array<std::string, 2> knownQueries(const Order& order, std::int64_t from) {
    std::string shown;
    for (std::size_t i = 0; i < shownFields - 1; ++i) shown += fieldName(i) + ", ";
    shown += "Owner_LOOKUP";
    auto rest =
        " FROM LeadsRecords WHERE EXISTS (SELECT 1 FROM Leads_CUSTOM_VIEW_RECORDS WHERE cv_id = '4077' AND "
        "record = LeadsRecords.id) ORDER BY " +
        Sides::terms(order) + " LIMIT 200 OFFSET " + std::to_string(from);
    return {"SELECT " + shown + rest, "SELECT " + shown + " FROM LeadsRecords WHERE _id IN (SELECT _id" + rest +
                                          ") ORDER BY " + Sides::terms(order)};
}

std::string quickest(kelva::benchmarks::HandWritten& hand, const Order& order, std::int64_t from) {
    std::string best;
    double seconds = 0;
    for (auto& query : knownQueries(order, from)) {
        hand.fetch(query.c_str());
        auto taken = secondsOf([&] {
            for (int i = 0; i < 5; ++i) hand.fetch(query.c_str());
        });
        if (best.empty() || taken < seconds) best = query, seconds = taken;
    }
    return best;
}

std::vector<std::string> idsOf(const kelva::benchmarks::HandWritten::Result& result) {
    std::vector<std::string> ids;
    for (std::size_t i = 0; i < result.cells.size(); i += shownFields)
        ids.push_back(result.texts.substr(result.cells[i].offset, result.cells[i].length));
    return ids;
}

void listPage(benchmark::State& state) {
    static Sides sides;
    static const ModuleInfo info = moduleInfo();
    auto& order = orders[static_cast<std::size_t>(state.range(0))];
    auto from = state.range(1);
    GetCVRecordsDBS records(sides.adapter, sides.map);
    auto view = viewOf(order);
    auto page = request(from);
    FilterRecordsQuery query{.filter = view, .moduleInfo = info, .request = page};

    // The first read of an order finds no index. The index exists when the queue is empty.
    static std::map<std::pair<std::int64_t, std::int64_t>, double> firstRead;
    auto& first = firstRead[{state.range(0), from}];
    first = std::max(first, secondsOf([&] { records.getRecords(query); }));
    state.counters["first_ms"] = 1000 * first;
    UsecaseQueue::queue()->syncBarrier([] {});
    auto byHand = quickest(sides.hand, order, from);
    Comparison comparison(state);
    std::optional<std::vector<Record>> found;
    kelva::benchmarks::HandWritten::Result expected;
    for (auto _ : state)
        comparison.round([&] { found = records.getRecords(query); },
                         [&] { expected = sides.hand.fetch(byHand.c_str()); });
    comparison.finish(0);
    auto ids = idsOf(expected);
    if (!found || found->size() != 200 ||
        !std::equal(found->begin(), found->end(), ids.begin(), ids.end(),
                    [](auto& record, auto& id) { return record.recordId() == id; }))
        state.SkipWithError("the rows differ");
}

/// Measures the cost of the index of an order for storing a page of 10,000 records. "of_hand" is the rate with the
/// index divided by the rate without.
void storeUnderListOrder(benchmark::State& state) {
    Folder folder;
    KelvaDatabasePersistance adapter(StorageLocation::onDisk(folder.path + "/ours.db"));
    platform::setLogSink([](std::string_view) {});
    if (!adapter.registerDB("a passphrase").ok()) std::abort();
    auto names = columns();
    auto rows = rowsFrom(0, batch);
    adapter.createTable(recordTable());
    adapter.createTable("ALTER TABLE LeadsRecords RENAME TO WithIndex; " + recordTable());
    adapter.createTable("CREATE INDEX latest ON WithIndex (" + Sides::terms(orders.front()) + ")");
    auto storeInto = [&](const char* table) { adapter.insertInto(table, TableSource(names, rows)); };
    Comparison comparison(state);
    for (auto _ : state) {
        comparison.round([&] { storeInto("WithIndex"); }, [&] { storeInto("LeadsRecords"); });
        for (auto table : {"WithIndex", "LeadsRecords"}) adapter.deleteAllObjects(table);
    }
    comparison.finish(batch);
    adapter.deregisterDB();
}

BENCHMARK(listPage)->ArgsProduct({{0, 1, 2}, {0, 50'000}})->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(storeUnderListOrder)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tarvo::benchmarks
