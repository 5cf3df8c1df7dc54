#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <barrier>
#include <thread>

#include "benchmarks/Support.h"
#include "benchmarks/kelva/HandWritten.h"
#include "kelva_db/KelvaDatabase.h"
#include "platform/Files.h"
#include "platform/Text.h"

namespace kelva::benchmarks {

namespace {

using namespace tarvo::benchmarks;  // NOLINT

const std::string key(32, 'k'), salt(16, 's');

Configuration rawConfiguration() {
    Configuration configuration;
    configuration.setRawKey(key, salt);
    return configuration;
}

std::string keyText() { return "x'" + tarvo::text::hex(key) + tarvo::text::hex(salt) + "'"; }

enum class Source { page, maps };

void insertList(benchmark::State& state, const std::string& idRule, Source source, bool replacing) {
    auto columns = columnNames(60);
    auto rows = makeRows(10'000, columns.size());
    TableSource page(columns, rows);
    auto maps = source == Source::maps ? toMaps(columns, rows) : std::vector<ValueMap>();
    Folder folder;
    DatabasePool database(folder.path + "/ours.db", rawConfiguration());
    HandWritten hand(folder.path + "/hand.db", keyText());
    auto create = createTable(columns, idRule);
    auto insert = [&](Database& writer) {
        source == Source::maps ? writer.insert("t", maps) : writer.insert("t", page);
    };
    auto empty = "DROP TABLE IF EXISTS t; " + create;
    auto reset = [&] {
        database.write([&](Database& writer) { writer.execute(empty); });
        hand.run(empty.c_str());
    };
    reset();
    Comparison comparison(state);
    for (auto _ : state) {
        if (!replacing) reset();
        comparison.round([&] { database.write(insert); }, [&] { hand.insert("t", columns, rows); });
    }
    comparison.finish(static_cast<std::int64_t>(rows.size()));
}

void insertNullableId(benchmark::State& state) { insertList(state, "UNIQUE", Source::page, false); }
void insertNotNullId(benchmark::State& state) { insertList(state, "NOT NULL UNIQUE", Source::page, false); }
void insertNotNullIdMaps(benchmark::State& state) { insertList(state, "NOT NULL UNIQUE", Source::maps, false); }
void replaceNotNullId(benchmark::State& state) { insertList(state, "NOT NULL UNIQUE", Source::page, true); }

void fetch(benchmark::State& state) {
    auto columns = columnNames(20);
    auto rows = makeRows(10'000, columns.size());
    Folder folder;
    DatabasePool database(folder.path + "/ours.db", rawConfiguration());
    HandWritten hand(folder.path + "/hand.db", keyText());
    auto create = createTable(columns, "NOT NULL UNIQUE");
    database.write([&](Database& writer) {
        writer.execute(create);
        writer.insert("t", TableSource(columns, rows));
    });
    hand.run(create.c_str());
    hand.insert("t", columns, rows);
    auto sql = "SELECT * FROM t LIMIT " + std::to_string(state.range(0));
    Comparison comparison(state);
    for (auto _ : state) {
        comparison.round(
            [&] { benchmark::DoNotOptimize(database.reading([&](Database& reader) { return reader.query(sql); })); },
            [&] { benchmark::DoNotOptimize(hand.fetch(sql.c_str())); });
    }
    comparison.finish(state.range(0));
}

/// Measures opening with a passphrase and reading on four readers. The floor is one derivation and one raw connection.
void open(benchmark::State& state) {
    Folder folder;
    auto path = folder.path + "/a.db";
    Configuration configuration;
    configuration.setKey("passphrase");
    auto fill = [](Database& writer) { writer.execute("CREATE TABLE IF NOT EXISTS t (x)"); };
    { DatabasePool(path, configuration).write(fill); }
    auto ours = [&] {
        DatabasePool database(path, configuration);
        std::barrier together(4);
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                database.read([&](Database& reader) {
                    reader.query("SELECT count(*) FROM t");
                    together.arrive_and_wait();
                });
            });
        }
    };
    auto byHand = [&] {
        std::string derived(32, '\0'), head = tarvo::files::read(path)->text().substr(0, 16);
        PKCS5_PBKDF2_HMAC("passphrase", 10, reinterpret_cast<const unsigned char*>(head.data()), 16, 64'000, EVP_sha1(),
                          32, reinterpret_cast<unsigned char*>(derived.data()));
        HandWritten hand(path, "x'" + tarvo::text::hex(derived) + tarvo::text::hex(head) + "'");
        hand.fetch("SELECT count(*) FROM t");
    };
    Comparison comparison(state);
    for (auto _ : state) comparison.round(ours, byHand);
    comparison.finish(0);
}

BENCHMARK(insertNullableId)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(insertNotNullId)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(insertNotNullIdMaps)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(replaceNotNullId)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(fetch)->Arg(200)->Arg(10'000)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(open)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace kelva::benchmarks
