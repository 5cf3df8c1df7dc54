#include <malloc.h>
#include <simdjson.h>

#include <fstream>
#include <unordered_map>
#include <unordered_set>

#include "benchmarks/Support.h"
#include "benchmarks/kelva/HandWritten.h"
#include "platform/JsonDocument.h"
#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/database_layer/KelvaDatabasePersistance.h"
#include "tarvobase/records/RecordPage.h"

// A page of the first download, from the bytes of the answer to committed encrypted rows: 10,000 records of 60 fields
// beside the same work by hand, which knows the page's shape.
namespace tarvo::benchmarks {

namespace {

using View = kelva::benchmarks::HandWritten::View;

constexpr std::size_t recordCount = 10'000, fieldCount = 60;
const std::string key(32, 'k'), salt(16, 's');

FieldDataType typeOf(std::size_t field) {
    if (field == 0) return FieldDataType::text;
    if (field % 20 == 1) return FieldDataType::lookup;
    return field % 15 == 2 ? FieldDataType::dateTime : FieldDataType::text;
}
std::string apiName(std::size_t field) { return field == 0 ? "id" : "Field_Name_" + std::to_string(field); }

std::string wireValue(std::size_t record, std::size_t field) {
    if (field == 0) return std::to_string(1'000'000'000'000 + record * 7919 % recordCount);
    if (typeOf(field) == FieldDataType::dateTime) return "2024-02-29T10:" + std::to_string(10 + record % 50) + ":00Z";
    return "value " + std::to_string(record % 97) + (field % 10 == 0 ? " of a longer text" : "");
}

std::string makePage() {
    std::string page = R"({"response":{"result":[{"info":{"module":"Leads"},"data":[)";
    for (std::size_t record = 0; record < recordCount; ++record) {
        page += record ? ",[" : "[";
        for (std::size_t field = 0; field < fieldCount; ++field) {
            page += (field ? ",[\"" : "[\"") + apiName(field) + "\",\"" + wireValue(record, field) + "\"";
            page += typeOf(field) == FieldDataType::lookup ? ",\"What is shown\"]" : "]";
        }
        page += "]";
    }
    return page + "]}]}}";
}

FieldList fieldList() {
    std::vector<FieldMetadata> fields(fieldCount);
    for (std::size_t i = 0; i < fieldCount; ++i) {
        fields[i].fieldAPIName = apiName(i);
        fields[i].fieldType = typeOf(i);
    }
    return FieldList("Leads", std::move(fields), {}, FieldIdentifier::fieldAPINameIdentifier());
}

long long secondsOfText(std::string_view text) {
    auto number = [&](std::size_t at, std::size_t length) {
        long long value = 0;
        for (auto c : text.substr(at, length)) value = value * 10 + (c - '0');
        return value;
    };
    auto days = std::chrono::sys_days(std::chrono::year(static_cast<int>(number(0, 4))) /
                                      static_cast<unsigned>(number(5, 2)) / static_cast<unsigned>(number(8, 2)));
    return days.time_since_epoch().count() * 86400LL + number(11, 2) * 3600 + number(14, 2) * 60 + number(17, 2);
}

/// The page by hand: the parser's own views straight into cells.
class HandWrittenPage {
public:
    explicit HandWrittenPage(const std::vector<std::string>& columns) {
        for (std::size_t i = 0; i < columns.size(); ++i) places_[columns[i]] = i;
        columnCount_ = columns.size();
        for (std::size_t i = 0; i < fieldCount; ++i) types_[apiName(i)] = typeOf(i);
    }
    const std::vector<View>& read(const platform::Data& body) {
        auto bytes = body.view();
        auto document = parser_.parse(bytes.data(), bytes.size(), false);
        cells_.clear();
        for (auto record : document["response"]["result"].at(0)["data"].get_array()) {
            auto row = cells_.size();
            cells_.resize(row + columnCount_, View{"", 0, 0});
            std::size_t at = 0;
            for (auto entry : record.get_array()) readEntry(entry.get_array(), row, at++);
        }
        return cells_;
    }

private:
    struct Known {
        std::string_view name;
        std::size_t place, shownPlace;
        bool isDate;
    };
    void readEntry(simdjson::dom::array entry, std::size_t row, std::size_t at) {
        auto item = entry.begin();
        std::string_view name = *item;
        auto& known = knownAt(name, at);
        std::string_view value = *++item;
        cells_[row + known.place] =
            known.isDate ? View{nullptr, 0, secondsOfText(value)} : View{value.data(), value.size(), 0};
        if (++item == entry.end()) return;
        std::string_view shown = *item;
        cells_[row + known.shownPlace] = {shown.data(), shown.size(), 0};
    }
    const Known& knownAt(std::string_view name, std::size_t at) {
        if (at == known_.size()) known_.emplace_back();
        auto& known = known_[at];
        if (known.name != name) {
            std::string text(name);
            auto shown = places_.find(text + "_LOOKUP");
            known = {names_.emplace(text).first->c_str(), places_[text], shown == places_.end() ? 0 : shown->second,
                     types_[text] == FieldDataType::dateTime};
        }
        return known;
    }

    simdjson::dom::parser parser_;
    std::unordered_map<std::string, std::size_t> places_;
    std::unordered_map<std::string, FieldDataType> types_;
    std::unordered_set<std::string> names_;
    std::vector<Known> known_;
    std::size_t columnCount_ = 0;
    std::vector<View> cells_;
};

RecordPage pageOf(const platform::Data& body, const FieldList& fields) {
    auto document = *json::Document::parse(body);
    std::array<json::Element, 1> entry;
    document.root().find("response").find("result").leadingItems(entry);
    return RecordPage(document, entry[0].find("data"), fields);
}

std::vector<std::string> columnsOf(const platform::Data& body, const FieldList& fields) {
    auto page = pageOf(body, fields);
    return {page.columns().begin(), page.columns().end()};
}

/// How much memory a piece of work takes at its peak, beyond what was there before.
template <class F>
std::int64_t peakBytesOf(F&& work) {
    auto bytesOf = [](const char* name) {
        std::ifstream status("/proc/self/status");
        for (std::string line; std::getline(status, line);)
            if (line.starts_with(name)) return std::stoll(line.substr(std::string_view(name).size())) * 1024;
        return 0LL;
    };
    std::ofstream("/proc/self/clear_refs") << 5 << std::flush;  // the peak begins anew
    auto before = bytesOf("VmRSS:");
    work();
    return bytesOf("VmHWM:") - before;
}

/// The library's and the hand's database with equal tables.
struct Sides {
    Folder folder;
    KelvaDatabasePersistance adapter{StorageLocation::onDisk(folder.path + "/ours.db")};
    kelva::benchmarks::HandWritten hand{folder.path + "/hand.db", "x'" + text::hex(key) + text::hex(salt) + "'"};

    Sides() {
        platform::setLogSink([](std::string_view) {});
        if (!adapter.registerDB("a passphrase").ok()) std::abort();
    }
    ~Sides() { adapter.deregisterDB(); }
    void create(const std::string& sql) {
        adapter.createTable("DROP TABLE IF EXISTS t; " + sql);
        hand.run(("DROP TABLE IF EXISTS t; " + sql).c_str());
    }
};

void page(benchmark::State& state) {
    platform::Data body(makePage());
    auto fields = fieldList();
    auto columns = columnsOf(body, fields);
    Sides sides;
    HandWrittenPage hand(columns);
    Comparison comparison(state);
    auto sql = createTable(columns, "NOT NULL UNIQUE");
    sides.create(sql);
    malloc_trim(0);
    auto peak = peakBytesOf([&] { sides.adapter.insertInto("t", pageOf(body, fields)); });
    state.counters["peak_of_page"] = static_cast<double>(peak) / static_cast<double>(body.size());
    for (auto _ : state) {
        sides.create(sql);
        comparison.round([&] { sides.adapter.insertInto("t", pageOf(body, fields)); },
                         [&] { sides.hand.insert("t", columns, hand.read(body)); });
    }
    comparison.finish(recordCount);
    if (sides.adapter.count("t", std::nullopt) != static_cast<std::int64_t>(recordCount))
        state.SkipWithError("rows are missing");
}

/// What comes before the database, alone: bytes to cells.
void pageRead(benchmark::State& state) {
    platform::Data body(makePage());
    auto fields = fieldList();
    auto columns = columnsOf(body, fields);
    HandWrittenPage hand(columns);
    Comparison comparison(state);
    for (auto _ : state)
        comparison.round([&] { benchmark::DoNotOptimize(pageOf(body, fields).rowCount()); },
                         [&] { benchmark::DoNotOptimize(hand.read(body).data()); });
    comparison.finish(recordCount);
}

BENCHMARK(page)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(pageRead)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tarvo::benchmarks
