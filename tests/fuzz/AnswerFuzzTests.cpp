#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "platform/Files.h"
#include "platform/SettingsStore.h"
#include "platform/Text.h"
#include "tarvobase/init_process/steps/InitCVRecordsDM.h"
#include "tarvobase/init_process/steps/InitCustomViewDM.h"
#include "tarvobase/init_process/steps/InitMetadataDM.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/metadata/wire/MetadataNS.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
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

/// Draws the damage. The same seed gives the same damage.
class Damage {
public:
    explicit Damage(std::uint64_t seed) : engine_(seed) {}

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
        static const std::vector<std::string> statements{
            "PRAGMA rekey = 'x'",
            "PRAGMA cipher_profile = '/tmp/tarvo-fuzz-profile'",
            "PRAGMA query_only = 1",
            "PRAGMA writable_schema = 1; UPDATE sqlite_master SET sql = 'x'",
            "ATTACH '/tmp/tarvo-fuzz-attached' AS other; CREATE TABLE other.T (a)",
            "DETACH main",
            "CREATE TRIGGER T AFTER INSERT ON MODULE_DETAILS BEGIN DELETE FROM MODULE_DETAILS; END",
            "SELECT load_extension('/tmp/x')",
            "VACUUM INTO '/tmp/tarvo-fuzz-copy'",
            "BEGIN; COMMIT",
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
};

class AnswerFuzzTest : public ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        createTables(metadataTables());
        database->createTable(customViewTable());
        Stores::over(database).modules()->storeModules({leads});
        for (auto& file : strayFiles) files::remove(file);
    }

    void download(Damage& damage) {
        auto defaults = std::make_shared<BrenUserDefaults>();
        auto nothing = [] {};
        std::string statement = "CREATE TABLE IF NOT EXISTS LeadsRecords (ID UNIQUE, COL_F1)";
        if (damage.happensOnceIn(3)) statement = damage.anyStatement();
        network->answer(damage.bodyOf({wire::entryWithTables("Leads", {{"module", "Leads"}, {"query", statement}})}));
        auto metadata = InitMetadataDM::make(database, database, defaults, overNetwork<MetadataNS>());
        metadata->getMetaData({leads}, nothing, nothing);
        settle();

        ValueList view{"1",     "All",   "All",           "s",    "S",   "true",           "true",
                       nullptr, nullptr, ValueList{"F1"}, "null", "asc", damage.criteria()};
        network->answer(damage.bodyOf(
            {ValueMap{{"info", ValueMap{{"module", "Leads"}}}, {"data", ValueList{Value(std::move(view))}}}}));
        auto views = InitCustomViewDM::make(database, defaults, overNetwork<InitCustomViewNS>());
        views->getCustomViews({leads}, nothing, nothing);
        settle();

        ValueList record{ValueList{"id", "r1"}, ValueList{"Api_F1", "Doe"}};
        network->answer(damage.bodyOf(
            {ValueMap{{"info", ValueMap{{"module", "Leads"}}}, {"data", ValueList{Value(std::move(record))}}}}));
        auto records = InitCVRecordsDM::make(database, defaults, overNetwork<InitCVRecordsNS>());
        records->getCustomViewRecords(std::vector{leads}, nothing, nothing);
        settle();
        readViews();
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
        for (auto& file : strayFiles) EXPECT_FALSE(files::exists(file)) << file;
        auto lines = logged();
        for (; linesChecked < lines.size(); ++linesChecked) {
            auto& line = lines[linesChecked];
            EXPECT_FALSE(line.starts_with("error: fetch") && line.find("syntax error") != line.npos) << line;
        }
        SettingsStore again(folder() + "/settings", "tests");
        EXPECT_TRUE(again.synchronise());
        for (auto& file : std::filesystem::directory_iterator(folder() + "/settings"))
            EXPECT_EQ(file.path().string().find(".damaged"), std::string::npos) << file.path();
    }

    /// Reads of views that the database answered, so that a run which damages too much is noticed.
    std::uint64_t viewsRead = 0;
    std::size_t linesChecked = 0;
    const Module leads{.moduleName = "Leads", .apiName = "Leads_API"};
    const std::vector<std::string> strayFiles{"/tmp/tarvo-fuzz-profile", "/tmp/tarvo-fuzz-attached",
                                              "/tmp/tarvo-fuzz-copy"};
};

TEST_F(AnswerFuzzTest, NoAnswerDoesMoreThanStoreItsContent) {
    auto seed = numberFrom("TARVO_FUZZ_SEED", 1);
    auto rounds = numberFrom("TARVO_FUZZ_ROUNDS", 400);
    for (std::uint64_t round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("seed " + std::to_string(seed + round));
        Damage damage(seed + round);
        download(damage);
        check();
    }
    EXPECT_GT(viewsRead, rounds / 4);
    // The file is whole, and its passphrase still opens it.
    database->deregisterDB();
    EXPECT_TRUE(openDatabase()->fetchObjects("SELECT count(*) FROM sqlite_master", std::nullopt));
}

}  // namespace
}  // namespace tarvo
