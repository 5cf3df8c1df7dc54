#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <random>
#include <set>

#include "platform/Files.h"
#include "platform/SettingsStore.h"
#include "platform/Text.h"
#include "tarvobase/init_process/steps/InitCVRecordsDM.h"
#include "tarvobase/init_process/steps/InitCustomViewDM.h"
#include "tarvobase/init_process/steps/InitMetadataDM.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/metadata/wire/MetadataNS.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/sync/RecordsSyncDataManager.h"
#include "tarvobase/value_objects/view/CustomViewInDatabase.h"
#include "tests/tarvobase/MetadataTables.h"
#include "tests/tarvobase/MetadataWire.h"
#include "tests/tarvobase/ServerFixture.h"

/// Broken and hostile answers of the server, from a seed. A longer run by hand:
/// `TARVO_FUZZ_ROUNDS=100000 TARVO_FUZZ_SEED=7 build/dev/bin/fuzz_tests`.
namespace tarvo {
namespace {

std::uint64_t numberFrom(const char* variable, std::uint64_t otherwise) {
    auto text = std::getenv(variable);
    auto number = text ? text::toInteger(text) : std::nullopt;
    return number && *number >= 0 ? static_cast<std::uint64_t>(*number) : otherwise;
}

/// Sees each statement that SQLite begins to run in this process, and keeps those that neither the library runs nor the
/// server may bring.
class StatementWatch {
public:
    StatementWatch() { sqlite3_auto_extension(reinterpret_cast<void (*)()>(&watch)); }
    ~StatementWatch() { sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(&watch)); }

    static std::size_t seen() {
        auto& all = shared();
        std::lock_guard lock(all.mutex);
        return all.count;
    }
    static std::string outside() {
        auto& all = shared();
        std::lock_guard lock(all.mutex);
        return text::join({all.outside.begin(), all.outside.end()}, "\n");
    }

    /// Returns whether a statement is of the kinds that may run. The hostile ones of this test differ in their words
    /// from what the library itself runs.
    static bool isAllowed(std::string_view statement) {
        static const auto beginnings = text::split(
            "select |insert |update |delete |create table |create index |create unique index |create temp|drop table |"
            "drop index |alter table |reindex|pragma key = |pragma cipher_compatibility = |pragma cipher_page_size = |"
            "pragma page_size = |pragma cache_size = -|pragma main.table_info|pragma table_info",
            "|");
        static const auto whole = text::split(
            "begin|begin immediate|commit|rollback|savepoint kelva|rollback to kelva|release kelva|"
            "pragma cipher_version|pragma cipher_log_level = none|pragma foreign_keys = 1|pragma synchronous = full|"
            "pragma query_only = 1|pragma journal_mode = wal|pragma journal_size_limit = 67108864|"
            "pragma main.schema_version|pragma temp.schema_version",
            "|");
        auto sql = text::asciiLowercase(statement);
        bool isKnown = std::ranges::find(whole, sql) != whole.end() ||
                       std::ranges::any_of(beginnings, [&](auto& one) { return sql.starts_with(one); });
        auto names = [&](std::string_view word) { return sql.find(word) != sql.npos; };
        return isKnown && !names("load_extension") && !names("sqlcipher_export") &&
               (sql.starts_with("select ") || !names("sqlite_master"));
    }

private:
    struct Seen {
        std::mutex mutex;
        std::size_t count = 0;
        std::set<std::string> outside;
    };
    static Seen& shared() {
        static Seen seen;
        return seen;
    }
    static int watch(sqlite3* handle, char**, const void*) {
        return sqlite3_trace_v2(handle, SQLITE_TRACE_STMT, &note, nullptr);
    }
    static int note(unsigned, void*, void*, void* statement) {
        std::string_view sql = static_cast<const char*>(statement);
        auto& all = shared();
        std::lock_guard lock(all.mutex);
        ++all.count;
        if (!isAllowed(sql)) all.outside.emplace(sql);
        return 0;
    }
};

/// Draws the damage. The same seed gives the same damage.
class Damage {
public:
    /// `outside` is a folder in which no statement may make a file.
    Damage(std::uint64_t seed, std::string outside) : engine_(seed), outside_(std::move(outside)) {}

    std::size_t below(std::size_t limit) { return engine_() % limit; }
    bool happensOnceIn(std::size_t times) { return below(times) == 0; }

    Value oneOf(const Value& list) { return (*list.asList())[below(list.asList()->size())]; }
    Value anyValue() {
        static const auto values = *json::parse(
            R"([null, true, 0, -1, 9223372036854775807, 1e300, "", "null", "\" ' ` ; -- /* %s \\", "😀\u0000x", [], {},
                [[{"a": []}]]])");
        return happensOnceIn(14) ? Value(std::string(3000, '9')) : oneOf(values);
    }
    std::string anyStatement() {
        const std::vector<std::string> statements{
            "PRAGMA rekey = 'x'",
            "PRAGMA cipher_profile = '" + outside_ + "/profile'",
            "PRAGMA query_only = ON",
            "PRAGMA writable_schema = 1; UPDATE sqlite_master SET sql = 'x'",
            "ATTACH '" + outside_ + "/attached' AS other; CREATE TABLE other.T (a)",
            "DETACH main",
            "CREATE TRIGGER T AFTER INSERT ON MODULE_DETAILS BEGIN DELETE FROM MODULE_DETAILS; END",
            "SELECT load_extension('" + outside_ + "/x')",
            "INSERT INTO MODULE_DETAILS (moduleName) SELECT sqlcipher_export('main')",
            "UPDATE sqlite_master SET sql = 'x'",
            "REINDEX; ANALYZE",
            "VACUUM INTO '" + outside_ + "/copy'",
            "VACUUM",
            "BEGIN EXCLUSIVE; END",
            "CREATE TABLE LeadsRecords (ID UNIQUE, COL_F1); PRAGMA rekey = 'y'",
            "CREATE TABLE \"a b\" (\"c d\", e)",
            "CREATE",
        };
        return statements[below(statements.size())];
    }
    /// Changes places of the value, about one in `rarity`.
    void change(Value& value, std::size_t rarity) {
        if (happensOnceIn(rarity)) value = happensOnceIn(4) ? Value(anyStatement()) : anyValue();
        if (auto list = value.mutableList()) {
            for (auto& item : *list) change(item, rarity);
            if (!list->empty() && happensOnceIn(rarity))
                list->erase(list->begin() + std::ptrdiff_t(below(list->size())));
            if (!list->empty() && happensOnceIn(rarity)) list->push_back(list->front());
        } else if (auto map = value.mutableMap()) {
            ValueMap changed;
            for (auto& [name, member] : *map) {
                if (happensOnceIn(rarity)) continue;
                auto copy = member;
                change(copy, rarity);
                changed.set(name, std::move(copy));
            }
            *map = std::move(changed);
        }
    }
    std::string bodyOf(ValueList entries) {
        Value body = ValueMap{{"response", ValueMap{{"result", std::move(entries)}}}};
        change(body, 20 + below(200));
        auto text = json::write(body).value_or("{}");
        if (!happensOnceIn(4) || text.empty()) return text;
        for (auto times = below(4); times > 0; --times) text[below(text.size())] = static_cast<char>(below(256));
        if (happensOnceIn(4)) text.resize(below(text.size()));
        return text;
    }
    /// A tree of criteria from the server's words and from others.
    Value criteria(int depth = 0) {
        if (happensOnceIn(12)) return anyValue();
        if (depth < 4 && happensOnceIn(3)) {
            ValueList list;
            for (auto count = 1 + below(3); count > 0; --count) {
                list.push_back(criteria(depth + 1));
                if (count > 1) list.push_back(happensOnceIn(8) ? anyValue() : Value(happensOnceIn(2) ? "and" : "or"));
            }
            return list;
        }
        static const auto fields = *json::parse(R"(["Api_F1", "id", "Nobody", "${Api_F1}", "a\"b", "Owner", ""])");
        static const auto comparators = *json::parse(
            R"(["equal", "not_equal", "contains", "starts_with", "ends_with", "less_than", "greater_equal", "between",
                "not_contains", "in", "less_equal", "greater_than", "is", "not_between", "nonsense", "' OR 1=1 --"])");
        static const auto values = *json::parse(
            R"(["Doe", "${EMPTY}", "a,b,,c", "%_'\"", "2024-06-25", "${TODAY}", "${CURRENTUSER}", ["a", 1, null],
                "' OR 1=1 --", "1;DROP TABLE LeadsRecords"])");
        return ValueMap{{"field", oneOf(fields)},
                        {"comparator", oneOf(comparators)},
                        {"value", happensOnceIn(6) ? anyValue() : oneOf(values)}};
    }

private:
    std::mt19937_64 engine_;
    const std::string outside_;
};

class AnswerFuzzTest : public ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        outside = folder() + "/outside";
        ASSERT_TRUE(files::createDirectories(outside));
        ASSERT_TRUE(SettingsStore(folder() + "/settings", "tests").set("kept", "as it was"));
        createTables(metadataTables());
        database->createTable(customViewTable());
        Stores::over(database).modules()->storeModules({leads});
    }

    void download(Damage& damage) {
        auto defaults = std::make_shared<BrenUserDefaults>();
        auto nothing = [] {};
        auto answerWithRow = [&](ValueList row) {
            ValueMap entry{{"info", ValueMap{{"module", "Leads"}}}, {"data", ValueList{Value(std::move(row))}}};
            network->answer(damage.bodyOf({std::move(entry)}));
        };
        std::string statement = "CREATE TABLE IF NOT EXISTS LeadsRecords (ID UNIQUE, COL_F1)";
        if (damage.happensOnceIn(3)) statement = damage.anyStatement();
        network->answer(damage.bodyOf({wire::entryWithTables("Leads", {{"module", "Leads"}, {"query", statement}})}));
        auto metadata = InitMetadataDM::make(database, database, defaults, overNetwork<MetadataNS>());
        metadata->getMetaData({leads}, nothing, nothing);
        settle();
        answerWithRow({"1", "All", "All", "s", "S", "true", "true", nullptr, nullptr, ValueList{"F1"}, "null", "asc",
                       damage.criteria()});
        auto views = InitCustomViewDM::make(database, defaults, overNetwork<InitCustomViewNS>());
        views->getCustomViews({leads}, nothing, nothing);
        settle();
        answerWithRow({ValueList{"id", "r1"}, ValueList{"Api_F1", "Doe"}});
        auto records = InitCVRecordsDM::make(database, defaults, overNetwork<InitCVRecordsNS>());
        records->getCustomViewRecords(std::vector{leads}, nothing, nothing);
        settle();
        sync(damage);
        readViews();
    }
    /// A page of changes ends its round, whatever its damage.
    void sync(Damage& damage) {
        auto entryOf = [](ValueList data) {
            ValueMap info{{"module", "Leads"}, {"responsetime", 1}, {"count", 1}};
            return Value(ValueMap{{"info", std::move(info)}, {"data", std::move(data)}});
        };
        ValueList record{ValueList{"id", "r1"}, ValueList{"Api_F1", "Doe"}};
        network->answer(
            damage.bodyOf({entryOf({Value(record)}), entryOf({Value(record)}), entryOf({Value(ValueList{"r1,r2"})})}));
        auto stores = Stores::over(database);
        RecordsSyncDataManager::make(stores, overNetwork<RecordsSyncNetworkService>())->syncRecords(leads);
        settle();
        EXPECT_TRUE(SyncRounds::shared().underWay(stores.scope).empty());
    }
    /// A condition that does not compile is logged by the adapter as a syntax error.
    void readViews() {
        auto views = CustomViewInDatabase(database).getCustomViews("Leads");
        auto stored = RecordInDatabase::make(database);
        if (!views) return;
        for (auto& view : *views)
            viewsRead += stored->countRecords(RecordQuery{.module = leads, .customView = view}).has_value();
    }
    void check() {
        EXPECT_FALSE(database->fetchObjects("SELECT 1 FROM other.T", std::nullopt)) << "a file is attached";
        EXPECT_EQ(column("SELECT count(*) FROM sqlite_master WHERE type IN ('trigger', 'view')"),
                  std::vector<std::string>{"0"});
        EXPECT_TRUE(database->execute({{"CREATE TABLE IF NOT EXISTS fuzz_probe (a)", {}}}))
            << "writes are switched off";
        EXPECT_TRUE(std::filesystem::is_empty(outside));
        EXPECT_EQ(StatementWatch::outside(), "");
        auto lines = logged();
        for (; linesChecked < lines.size(); ++linesChecked) {
            auto& line = lines[linesChecked];
            EXPECT_FALSE(line.starts_with("error: fetch") && line.find("syntax error") != line.npos) << line;
        }
        SettingsStore again(folder() + "/settings", "tests");
        EXPECT_TRUE(again.synchronise());
        EXPECT_EQ(again.string("kept"), "as it was");
        for (auto& file : std::filesystem::directory_iterator(folder() + "/settings"))
            EXPECT_EQ(file.path().string().find(".damaged"), std::string::npos) << file.path();
    }

    /// Reads of views that the database answered, so that a run which damages too much is noticed.
    std::uint64_t viewsRead = 0;
    std::size_t linesChecked = 0;
    const Module leads{.moduleName = "Leads", .apiName = "Leads_API"};
    std::string outside;  // a folder in which nothing may appear
    StatementWatch statements;
};

TEST_F(AnswerFuzzTest, NoAnswerDoesMoreThanStoreItsContent) {
    auto seed = numberFrom("TARVO_FUZZ_SEED", 1);
    auto rounds = numberFrom("TARVO_FUZZ_ROUNDS", 400);
    for (std::uint64_t round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("seed " + std::to_string(seed + round));
        Damage damage(seed + round, outside);
        download(damage);
        check();
    }
    EXPECT_GT(viewsRead, rounds / 4);
    EXPECT_GT(StatementWatch::seen(), rounds * 10);
    // The file is whole, and its passphrase still opens it.
    database->deregisterDB();
    EXPECT_TRUE(openDatabase()->fetchObjects("SELECT count(*) FROM sqlite_master", std::nullopt));
}

}  // namespace
}  // namespace tarvo
