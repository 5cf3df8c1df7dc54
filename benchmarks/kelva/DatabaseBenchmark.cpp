#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <barrier>
#include <chrono>
#include <thread>

#include "benchmarks/kelva/HandWritten.h"
#include "kelva_db/KelvaDatabase.h"
#include "platform/Files.h"
#include "platform/Text.h"

// Each benchmark does the work with the library and by hand in turns and reports the hand's time over the library's
// as the counter "of_hand": 1 is as quick, 0.5 takes twice as long. The time shown is the library's.
namespace kelva::benchmarks {

namespace {

const std::string key(32, 'k'), salt(16, 's');

class Stopwatch {
public:
    double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count(); }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

template <class F>
double secondsOf(F&& work) {
    Stopwatch watch;
    work();
    return watch.seconds();
}

/// Adds up both sides and sets the counters at the end.
class Comparison {
public:
    explicit Comparison(benchmark::State& state) : state_(state) {}
    template <class Ours, class Hand>
    void round(Ours&& ours, Hand&& hand) {
        // The second of two equal works finds warmer caches, so the order changes from round to round.
        bool oursFirst = rounds_++ % 2 == 0;
        if (!oursFirst) hand_ += secondsOf(hand);
        auto seconds = secondsOf(ours);
        if (oursFirst) hand_ += secondsOf(hand);
        ours_ += seconds;
        state_.SetIterationTime(seconds);
    }
    void finish(std::int64_t rowsEachRound) {
        state_.counters["of_hand"] = hand_ / ours_;
        if (rowsEachRound == 0) return;
        auto rows = static_cast<double>(rowsEachRound) * static_cast<double>(rounds_);
        state_.counters["rows/s"] = rows / ours_;
        state_.counters["hand_rows/s"] = rows / hand_;
    }

private:
    benchmark::State& state_;
    double ours_ = 0, hand_ = 0;
    int rounds_ = 0;
};

struct Folder {
    std::string path = tarvo::files::makeTemporaryDirectory("kelva_benchmark");
    ~Folder() { tarvo::files::remove(path); }
};

Configuration rawConfiguration() {
    Configuration configuration;
    configuration.setRawKey(key, salt);
    return configuration;
}

std::string keyText() { return "x'" + tarvo::text::hex(key) + tarvo::text::hex(salt) + "'"; }

std::vector<std::string> columnNames(std::size_t count) {
    std::vector<std::string> names = {"id"};
    for (std::size_t i = 1; i < count; ++i) names.push_back("column" + std::to_string(i));
    return names;
}

std::string createTable(const std::vector<std::string>& columns, const std::string& idRule) {
    std::string sql = "CREATE TABLE t (id TEXT " + idRule;
    for (std::size_t i = 1; i < columns.size(); ++i) sql += ", " + columns[i] + " TEXT";
    return sql + ")";
}

HandWritten::Table makeRows(std::size_t rowCount, std::size_t columnCount) {
    HandWritten::Table rows(rowCount);
    for (std::size_t row = 0; row < rowCount; ++row) {
        rows[row].push_back(std::to_string(1'000'000'000 + row * 7919 % rowCount));
        for (std::size_t i = 1; i < columnCount; ++i)
            rows[row].push_back("value " + std::to_string(i) + (i % 10 == 0 ? " of a longer text" : ""));
    }
    return rows;
}

/// A page that is stored cell by cell, as one that is being parsed.
class TableSource final : public RowSource {
public:
    TableSource(const std::vector<std::string>& columns, const HandWritten::Table& rows)
        : columns_(columns), rows_(rows) {}
    std::span<const std::string> columns() const override { return columns_; }
    std::size_t rowCount() const override { return rows_.size(); }
    tarvo::ValueView cell(std::size_t row, std::size_t column) const override {
        return tarvo::ValueView::text(rows_[row][column]);
    }
    bool mayHoldObjects() const override { return false; }

private:
    const std::vector<std::string>& columns_;
    const HandWritten::Table& rows_;
};

std::vector<ValueMap> toMaps(const std::vector<std::string>& columns, const HandWritten::Table& rows) {
    std::vector<ValueMap> maps(rows.size());
    for (std::size_t row = 0; row < rows.size(); ++row)
        for (std::size_t i = 0; i < columns.size(); ++i) maps[row].set(columns[i], rows[row][i]);
    return maps;
}

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

/// Opening with a passphrase and reading on four readers, against one derivation and one raw connection.
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
