#include <array>

#include "benchmarks/Support.h"
#include "benchmarks/kelva/HandWritten.h"
#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/database_layer/KelvaDatabasePersistance.h"
#include "tarvobase/metadata/ModuleInfo.h"
#include "tarvobase/records/sql/CustomViewOfflineQueryParser.h"
#include "tarvobase/records/sql/CustomViewQueryFormation.h"
#include "tarvobase/records/sql/RecordInDatabase.h"

// Measures how long it takes to compile a view, to fill it, and to run it over 100,000 records. The floor is a
// hand-written query.
namespace tarvo::benchmarks {

namespace {

const std::string key(32, 'k'), salt(16, 's');
constexpr std::size_t recordCount = 100'000, batch = 10'000, viewCount = 1'000;
constexpr std::array<const char*, 6> names = {"id", "Company", "Status", "Amount", "Created_Time", "City"};

ModuleInfo moduleInfo() {
    using T = FieldDataType;
    constexpr std::array types = {T::text, T::text, T::picklist, T::currency, T::dateTime, T::text};
    std::vector<FieldMetadata> fields(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        fields[i].fieldAPIName = names[i];
        fields[i].fieldType = types[i];
    }
    ModuleInfo info;
    info.module.moduleName = "Leads";
    info.metadata = FieldList("Leads", std::move(fields), {}, FieldIdentifier::fieldAPINameIdentifier());
    return info;
}

Value leaf(const char* field, const char* comparator, const char* value) {
    return ValueMap{{"field", field}, {"comparator", comparator}, {"value", value}};
}

/// Returns the criteria for leads of two states above an amount that belong to a company or are recent.
CustomView compiledView() {
    Value criteria = ValueList{
        leaf("Status", "equal", "Open,Won"), "and", leaf("Amount", "greater_than", "5000"), "and",
        ValueList{leaf("Company", "contains", "acme"), "or", leaf("Created_Time", "greater_equal", "1700090000")}};
    auto query = CustomViewOfflineQueryParser::compile(criteria).value();
    CustomView view;
    view.isOfflineSupported = query.isRunnable;
    view.offlineQuery = query.placeholder;
    view.offlineQueryReplaceInfo = query.replaceInfo;
    return view;
}
constexpr const char* byHand =
    "SELECT id, Company, Status, Amount, Created_Time, City FROM LeadsRecords WHERE Status IN ('Open', 'Won') COLLATE "
    "NOCASE AND CAST(Amount AS NUMERIC) > 5000 AND (Company LIKE '%acme%' OR Created_Time >= 1700090000)";

std::vector<ValueMap> rowsFrom(std::size_t first) {
    constexpr std::array<const char*, 5> statuses = {"Open", "Won", "Lost", "New", "Closed"};
    std::vector<ValueMap> rows;
    for (auto i = first; i < first + batch; ++i)
        rows.push_back({{"id", std::to_string(1'000'000 + i)},
                        {"Company", (i % 50 == 0 ? "Acme " : "Zylker ") + std::to_string(i)},
                        {"Status", statuses[i * 31 % statuses.size()]},
                        {"Amount", std::to_string(i * 7919 % 10'000)},
                        {"Created_Time", static_cast<std::int64_t>(1'700'000'000 + i)},
                        {"City", "City " + std::to_string(i % 97)}});
    return rows;
}

/// Compiles a thousand views from the server's criteria to a condition on the table.
void fill(benchmark::State& state) {
    auto info = moduleInfo();
    for (auto _ : state)
        for (std::size_t i = 0; i < viewCount; ++i)
            benchmark::DoNotOptimize(CustomViewQueryFormation::getWhereCondition(compiledView(), info.metadata));
    state.counters["views/s"] = benchmark::Counter(viewCount, benchmark::Counter::kIsIterationInvariantRate);
}

void run(benchmark::State& state) {
    platform::setLogSink([](std::string_view) {});
    CommonConfigration::sharedInstance().fieldIdentifier = FieldIdentifier::fieldAPINameIdentifier();
    Folder folder;
    auto adapter = std::make_shared<KelvaDatabasePersistance>(StorageLocation::onDisk(folder.path + "/ours.db"));
    kelva::benchmarks::HandWritten hand(folder.path + "/hand.db", "x'" + text::hex(key) + text::hex(salt) + "'");
    if (!adapter->registerDB("a passphrase").ok()) std::abort();
    auto records = RecordInDatabase::make(adapter);
    constexpr auto table =
        "CREATE TABLE LeadsRecords (id TEXT NOT NULL UNIQUE, Company TEXT, Status TEXT, Amount TEXT, Created_Time "
        "INTEGER, City TEXT)";
    adapter->createTable(table);
    hand.run(table);
    std::vector<std::string> columns(names.begin(), names.end());
    for (std::size_t first = 0; first < recordCount; first += batch) {
        auto rows = rowsFrom(first);
        records->saveRecordDictionary(rows, ModuleIdentifier::Case::leads);
        Table cells;
        for (auto& row : rows) {
            cells.emplace_back();
            for (auto& name : columns) cells.back().push_back(row.valueOf(name).toText().value_or(""));
        }
        hand.insert("LeadsRecords", columns, cells);
    }
    auto info = moduleInfo();
    auto view = compiledView();
    std::size_t ours = 0, theirs = 0;
    Comparison comparison(state);
    for (auto _ : state)
        comparison.round([&] { ours = records->getRecords({.customView = view, .moduleInfo = info}).value().size(); },
                         [&] { theirs = hand.fetch(byHand).cells.size() / names.size(); });
    comparison.finish(recordCount);
    state.counters["found"] = static_cast<double>(ours);
    if (ours == 0 || ours != theirs) state.SkipWithError("the two find other records");
    adapter->deregisterDB();
}

BENCHMARK(fill)->Unit(benchmark::kMillisecond);
BENCHMARK(run)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tarvo::benchmarks
