#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <string>
#include <vector>

#include "platform/Files.h"
#include "platform/Rows.h"

// Each benchmark does the work with the library and with hand-written code in turns. The counter "of_hand" is the time
// of the hand-written code divided by the library's: at 1 the library is as quick, at 0.5 it takes twice as long. The
// time that is shown is the library's.
namespace tarvo::benchmarks {

using Table = std::vector<std::vector<std::string>>;

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

/// Adds up the times of both sides and sets the counters at the end.
class Comparison {
public:
    explicit Comparison(benchmark::State& state) : state_(state) {}
    template <class Ours, class Hand>
    void round(Ours&& ours, Hand&& hand) {
        // The side that runs second finds warmer caches, so the order changes from round to round.
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
    std::string path = files::makeTemporaryDirectory("kelva_benchmark");
    ~Folder() { files::remove(path); }
};

inline std::vector<std::string> columnNames(std::size_t count) {
    std::vector<std::string> names = {"id"};
    for (std::size_t i = 1; i < count; ++i) names.push_back("column" + std::to_string(i));
    return names;
}

inline std::string createTable(const std::vector<std::string>& columns, const std::string& idRule) {
    std::string sql = "CREATE TABLE t (id TEXT " + idRule;
    for (std::size_t i = 1; i < columns.size(); ++i) sql += ", " + columns[i] + " TEXT";
    return sql + ")";
}

inline Table makeRows(std::size_t rowCount, std::size_t columnCount) {
    Table rows(rowCount);
    for (std::size_t row = 0; row < rowCount; ++row) {
        rows[row].push_back(std::to_string(1'000'000'000 + row * 7919 % rowCount));
        for (std::size_t i = 1; i < columnCount; ++i)
            rows[row].push_back("value " + std::to_string(i) + (i % 10 == 0 ? " of a longer text" : ""));
    }
    return rows;
}

/// A page that is stored cell by cell, like one that is being parsed.
class TableSource final : public RowSource {
public:
    TableSource(const std::vector<std::string>& columns, const Table& rows) : columns_(columns), rows_(rows) {}
    std::span<const std::string> columns() const override { return columns_; }
    std::size_t rowCount() const override { return rows_.size(); }
    ValueView cell(std::size_t row, std::size_t column) const override { return ValueView::text(rows_[row][column]); }
    bool mayHoldObjects() const override { return false; }

private:
    const std::vector<std::string>& columns_;
    const Table& rows_;
};

inline std::vector<ValueMap> toMaps(const std::vector<std::string>& columns, const Table& rows) {
    std::vector<ValueMap> maps(rows.size());
    for (std::size_t row = 0; row < rows.size(); ++row)
        for (std::size_t i = 0; i < columns.size(); ++i) maps[row].set(columns[i], rows[row][i]);
    return maps;
}

}  // namespace tarvo::benchmarks
