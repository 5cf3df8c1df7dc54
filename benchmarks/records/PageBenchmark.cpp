#include <malloc.h>
#include <simdjson.h>

#include <fstream>
#include <future>
#include <thread>
#include <unordered_map>
#include <unordered_set>

#include "benchmarks/Support.h"
#include "benchmarks/kelva/HandWritten.h"
#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/database_layer/KelvaDatabasePersistance.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/records/wire/RecordPage.h"
#include "tarvobase/records/wire/WireRecords.h"
#include "tarvobase/sync/RecordsSyncDataManager.h"
#include "tarvobase/sync/wire/RecordsSyncParser.h"
#include "tarvobase/utils/CommonUtils.h"
#include "tarvobase/value_objects/field/FieldMetadataInDatabase.h"

// Measures a page of the first download, or of edits of a sync, 10,000 records of 60 fields, from the bytes of the
// answer to committed encrypted rows. The floor is hand-written code that knows the page's shape.
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
    if (field == 0)
        return std::to_string(1'000'000'000'000 + record / recordCount * recordCount + record * 7919 % recordCount);
    if (typeOf(field) == FieldDataType::dateTime) return "2024-02-29T10:" + std::to_string(10 + record % 50) + ":00Z";
    return "value " + std::to_string(record % 97) + (field % 10 == 0 ? " of a longer text" : "");
}

/// Returns the records from a number on, as the server lists them.
std::string makeRecords(std::size_t first = 0) {
    std::string page;
    for (std::size_t record = first; record < first + recordCount; ++record) {
        page += record > first ? ",[" : "[";
        for (std::size_t field = 0; field < fieldCount; ++field) {
            page += (field ? ",[\"" : "[\"") + apiName(field) + "\",\"" + wireValue(record, field) + "\"";
            page += typeOf(field) == FieldDataType::lookup ? ",\"What is shown\"]" : "]";
        }
        page += "]";
    }
    return page;
}
std::string makePage() {
    return R"({"response":{"result":[{"info":{"module":"Leads"},"data":[)" + makeRecords() + "]}]}}";
}

std::vector<FieldMetadata> metadata() {
    std::vector<FieldMetadata> fields(fieldCount);
    for (std::size_t i = 0; i < fieldCount; ++i) {
        fields[i].fieldID = std::to_string(i);
        fields[i].moduleName = "Leads";
        fields[i].fieldAPIName = fields[i].columnCRMName = apiName(i);
        fields[i].fieldType = typeOf(i);
    }
    return fields;
}
FieldList fieldList() { return FieldList("Leads", metadata(), {}, FieldIdentifier::fieldAPINameIdentifier()); }

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

/// The hand-written page puts the parser's own views into cells.
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

WireRecords wireOf(const platform::Data& body) {
    return WireRecordsParser::parse(body).value().result.front().value().data.value();
}
RecordPage pageOf(const platform::Data& body, const FieldList& fields) {
    auto wire = wireOf(body);
    return RecordPage(wire.document, wire.list, fields);
}

std::vector<std::string> columnsOf(const platform::Data& body, const FieldList& fields) {
    auto page = pageOf(body, fields);
    return {page.columns().begin(), page.columns().end()};
}

/// Measures the memory that a piece of work takes at its peak, beyond the memory in use before. What earlier pages left
/// for later ones is given back first.
template <class F>
std::int64_t peakBytesOf(F&& work) {
    auto bytesOf = [](const char* name) {
        std::ifstream status("/proc/self/status");
        for (std::string line; std::getline(status, line);)
            if (line.starts_with(name)) return std::stoll(line.substr(std::string_view(name).size())) * 1024;
        return 0LL;
    };
    std::this_thread::sleep_for(std::chrono::seconds(2));
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5 << std::flush;  // the peak begins anew
    auto before = bytesOf("VmRSS:");
    work();
    return bytesOf("VmHWM:") - before;
}

/// The databases of the library and of the floor, with equal tables of records.
struct Sides {
    Folder folder;
    std::shared_ptr<KelvaDatabasePersistance> adapter =
        std::make_shared<KelvaDatabasePersistance>(StorageLocation::onDisk(folder.path + "/ours.db"));
    kelva::benchmarks::HandWritten hand{folder.path + "/hand.db", "x'" + text::hex(key) + text::hex(salt) + "'"};
    std::shared_ptr<RecordInDatabase> records = RecordInDatabase::make(adapter);

    Sides() {
        platform::setLogSink([](std::string_view) {});
        CommonConfigration::sharedInstance().fieldIdentifier = FieldIdentifier::fieldAPINameIdentifier();
        if (!adapter->registerDB("a passphrase").ok()) std::abort();
        adapter->createTable(
            "CREATE TABLE MODULE_SPECIFIC_METADATA (_id INTEGER PRIMARY KEY, field_id, field_api_name, module_name, "
            "crm_col_name, field_label, field_type, max_length, is_read_only, is_custom_field, is_unique, "
            "is_quick_create, is_primary_key, is_mproxy_metadata, lookup_module_api, related_list_id, visible, mode, "
            "additional_info)");
        adapter->createTable(
            "CREATE TABLE PICKLIST_METADATA (field_actual_value, field_display_value, field_id, field_api_name, "
            "crm_col_name, module_name, layout_id, field_map, position)");
        FieldMetadataInDatabase(std::string(FieldMetadataDatabaseConstants().TableName), adapter)
            .storeFieldMetadata(metadata());
    }
    ~Sides() { adapter->deregisterDB(); }
    void create(const std::vector<std::string>& columns) {
        auto sql = createTable(columns, "NOT NULL UNIQUE");
        sql.replace(sql.find(" t "), 3, " LeadsRecords ");
        sql = "DROP TABLE IF EXISTS LeadsRecords; " + sql;
        adapter->createTable(sql);
        hand.run(sql.c_str());
    }
    void store(const platform::Data& body) {
        auto stored = records->storePage(wireOf(body), "Leads");
        if (!stored || stored->size() != recordCount) std::abort();
    }
};

void page(benchmark::State& state) {
    platform::Data body(makePage());
    auto columns = columnsOf(body, fieldList());
    Sides sides;
    HandWrittenPage hand(columns);
    Comparison comparison(state);
    sides.create(columns);
    auto peak = peakBytesOf([&] { sides.store(body); });
    state.counters["peak_of_page"] = static_cast<double>(peak) / static_cast<double>(body.size());
    for (auto _ : state) {
        sides.create(columns);
        comparison.round([&] { sides.store(body); },
                         [&] { sides.hand.insert("LeadsRecords", columns, hand.read(body)); });
    }
    comparison.finish(recordCount);
    if (sides.adapter->count("LeadsRecords", std::nullopt) != static_cast<std::int64_t>(recordCount))
        state.SkipWithError("rows are missing");
}

/// Updates rows by one prepared statement in one transaction.
void updateByHand(sqlite3* handle, const std::vector<std::string>& columns, const std::vector<View>& cells) {
    std::string sql = "UPDATE LeadsRecords SET ";
    for (std::size_t i = 1; i < columns.size(); ++i) sql += (i > 1 ? "," : "") + columns[i] + "=?";
    sql += " WHERE id=?";
    sqlite3_stmt* statement = nullptr;
    sqlite3_exec(handle, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    sqlite3_prepare_v2(handle, sql.c_str(), -1, &statement, nullptr);
    for (std::size_t row = 0; row < cells.size(); row += columns.size()) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            auto& cell = cells[row + i];
            auto place = static_cast<int>(i == 0 ? columns.size() : i);
            if (cell.text)
                sqlite3_bind_text(statement, place, cell.text, static_cast<int>(cell.length), SQLITE_STATIC);
            else
                sqlite3_bind_int64(statement, place, cell.number);
        }
        if (sqlite3_step(statement) != SQLITE_DONE) std::abort();
        sqlite3_reset(statement);
    }
    sqlite3_finalize(statement);
    if (sqlite3_exec(handle, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK) std::abort();
}

/// Measures a page of edited records of a sync, from bytes to committed rows. The floor reads the page by hand as well.
void pageOfEdits(benchmark::State& state) {
    platform::Data body(makePage());
    auto columns = columnsOf(body, fieldList());
    Sides sides;
    HandWrittenPage hand(columns);
    Comparison comparison(state);
    sides.create(columns);
    sides.store(body);
    sides.hand.insert("LeadsRecords", columns, hand.read(body));
    for (auto _ : state)
        comparison.round(
            [&] {
                if (!sides.records->modifyPage(wireOf(body), "Leads")) std::abort();
            },
            [&] { updateByHand(sides.hand.handle(), columns, hand.read(body)); });
    comparison.finish(recordCount);
}

/// Serves a first round of sync from files, as the network would hand over the bodies.
class FirstRound final : public RecordsSyncNetworkServiceProtocol, public RecordsSyncDataManagerDelegate {
public:
    FirstRound(const std::string& folder, std::size_t pages) : folder_(folder) {
        for (std::size_t page = 0; page < pages; ++page) {
            auto from = page * recordCount;
            auto body = bodyOf(from, page + 1 < pages);
            if (!files::writeAtomically(pathOf(from), body, false)) std::abort();
        }
    }

    void syncRecordsForModule(const Module& module, const std::string&, std::int64_t from, std::int64_t) override {
        CommonUtils::performAsyncInBackground([delegate = recordsSyncDelegate.lock(), module, from, this] {
            auto results = RecordsSyncParser::parseResult(files::read(pathOf(static_cast<std::size_t>(from))).value());
            if (!results) std::abort();
            delegate->syncCompleted(std::move(results).value(), from, module);
        });
    }
    bool wantsSyncResults() const override { return false; }
    void syncEnded(const SyncRound& round) override { ended_.set_value(round); }

    /// Runs the round to its end, and returns the number of records that it brought.
    static std::int64_t run(const std::shared_ptr<FirstRound>& server, const Sides& sides) {
        auto manager = RecordsSyncDataManager::make(Stores::over(sides.adapter), server);
        manager->delegate = server;
        manager->syncRecords(Module{.moduleName = "Leads", .apiName = "Leads"});
        return server->ended_.get_future().get().added;
    }

private:
    std::string pathOf(std::size_t from) const { return folder_ + "/page" + std::to_string(from) + ".json"; }
    static std::string bodyOf(std::size_t from, bool hasMore) {
        auto info = R"("info":{"module":"Leads","responsetime":1700000000000,"count":)" + std::to_string(recordCount) +
                    (hasMore ? R"(,"more_records":true})" : "}");
        auto none = "{" + info + R"(,"data":[]})";
        return R"({"response":{"result":[{)" + info + R"(,"data":[)" + makeRecords(from) + "]}," + none + "," + none +
               "]}}";
    }

    const std::string folder_;
    std::promise<SyncRound> ended_;
};

/// Measures the first round of sync of a module with 100,000 records: its time, and its peak of memory by that of a
/// round of one page. The cache of the database, which belongs to no page, is filled by a round before.
void firstRoundOfSync(benchmark::State& state) {
    constexpr std::size_t pages = 10;
    auto columns = columnsOf(platform::Data(makePage()), fieldList());
    Sides sides;
    CommonConfigration::sharedInstance().localDirectoryLocation = sides.folder.path;
    std::int64_t added = 0;
    double seconds = 0;
    auto peakOfRound = [&](std::size_t pageCount) {
        sides.create(columns);
        auto server = std::make_shared<FirstRound>(sides.folder.path, pageCount);
        return static_cast<double>(
            peakBytesOf([&] { seconds = secondsOf([&] { added = FirstRound::run(server, sides); }); }));
    };
    peakOfRound(pages);
    auto peakOfPage = peakOfRound(1);
    for (auto _ : state) {
        auto peak = peakOfRound(pages);
        state.SetIterationTime(seconds);
        state.counters["peak_in_pages"] = peak / peakOfPage;
        state.counters["peak_MB"] = peak / 1e6;
        if (added != static_cast<std::int64_t>(pages * recordCount)) return state.SkipWithError("the round broke off");
    }
    state.counters["rows/s"] =
        benchmark::Counter(static_cast<double>(pages * recordCount), benchmark::Counter::kIsIterationInvariantRate);
}

/// Measures the work before the database, from bytes to cells.
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
BENCHMARK(pageOfEdits)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(firstRoundOfSync)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(pageRead)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tarvo::benchmarks
