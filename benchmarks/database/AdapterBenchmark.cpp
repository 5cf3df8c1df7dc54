#include "benchmarks/Support.h"
#include "benchmarks/kelva/HandWritten.h"
#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/database_layer/KelvaDatabasePersistance.h"

// Measures the adapter, as data managers use it. The floor does the same work with hand-written code.
namespace tarvo::benchmarks {

namespace {

const std::string key(32, 'k'), salt(16, 's');

struct Sides {
    Folder folder;
    KelvaDatabasePersistance adapter{StorageLocation::onDisk(folder.path + "/ours.db")};
    kelva::benchmarks::HandWritten hand{folder.path + "/hand.db", "x'" + text::hex(key) + text::hex(salt) + "'"};

    Sides() {
        platform::setLogSink([](std::string_view) {});
        if (!adapter.registerDB("a passphrase").ok()) std::abort();
    }
    ~Sides() { adapter.deregisterDB(); }
    void create(const std::vector<std::string>& columns, const std::string& idRule) {
        auto sql = "DROP TABLE IF EXISTS t; " + createTable(columns, idRule);
        adapter.createTable(sql);
        hand.run(sql.c_str());
    }
};

enum class Batch { page, maps };

void insertInto(benchmark::State& state, const std::string& idRule, Batch batch) {
    auto columns = columnNames(60);
    auto rows = makeRows(10'000, columns.size());
    TableSource page(columns, rows);
    auto maps = batch == Batch::maps ? toMaps(columns, rows) : std::vector<ValueMap>();
    Sides sides;
    Comparison comparison(state);
    for (auto _ : state) {
        sides.create(columns, idRule);
        auto ours = [&] {
            batch == Batch::maps ? sides.adapter.insertInto("t", maps) : sides.adapter.insertInto("t", page);
        };
        comparison.round(ours, [&] { sides.hand.insert("t", columns, rows); });
    }
    comparison.finish(static_cast<std::int64_t>(rows.size()));
    if (sides.adapter.count("t", std::nullopt) != static_cast<std::int64_t>(rows.size()))
        state.SkipWithError("rows are missing");
}

void fetchObjects(benchmark::State& state) {
    auto columns = columnNames(20);
    auto rows = makeRows(10'000, columns.size());
    Sides sides;
    sides.create(columns, "NOT NULL UNIQUE");
    sides.adapter.insertInto("t", TableSource(columns, rows));
    sides.hand.insert("t", columns, rows);
    FetchQuery query("t");
    query.limit = state.range(0);
    auto sql = "SELECT * FROM t LIMIT " + std::to_string(state.range(0));
    Comparison comparison(state);
    for (auto _ : state)
        comparison.round([&] { benchmark::DoNotOptimize(sides.adapter.fetchObjects(query)); },
                         [&] { benchmark::DoNotOptimize(sides.hand.fetch(sql.c_str())); });
    comparison.finish(state.range(0));
}

void adapterInsertNotNullId(benchmark::State& state) { insertInto(state, "NOT NULL UNIQUE", Batch::page); }
void adapterInsertNullableId(benchmark::State& state) { insertInto(state, "UNIQUE", Batch::page); }
void adapterInsertNotNullIdMaps(benchmark::State& state) { insertInto(state, "NOT NULL UNIQUE", Batch::maps); }

BENCHMARK(adapterInsertNotNullId)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(adapterInsertNullableId)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(adapterInsertNotNullIdMaps)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(fetchObjects)->Arg(200)->Arg(10'000)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace

}  // namespace tarvo::benchmarks
