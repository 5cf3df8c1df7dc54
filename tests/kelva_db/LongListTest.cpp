#include <numeric>

#include "kelva_db/internal/Sql.h"
#include "tests/kelva_db/DatabaseFixture.h"

namespace kelva::tests {

namespace {

std::string placeholders(std::size_t count) {
    std::string text = "?";
    for (std::size_t i = 1; i < count; ++i) text += ",?";
    return text;
}

class LongListTest : public testing::Test {
protected:
    LongListTest() : database_(folder_.file("a.db"), rawConfiguration()) {}
    Folder folder_;
    DatabasePool database_;
};

TEST_F(LongListTest, FiftyThousandParametersCountAsIfThereWereNoLimit) {
    ValueList parameters = {"first"};
    std::vector<ValueMap> rows;
    for (int i = 0; i < 60'000; ++i) rows.push_back({{"id", "r" + std::to_string(i)}, {"n", i}});
    for (int i = 0; i < 50'000; ++i) parameters.push_back("r" + std::to_string(i));
    parameters.push_back(10);
    database_.write([&](Database& writer) {
        writer.execute("CREATE TABLE t (id TEXT NOT NULL UNIQUE, n INTEGER)");
        writer.insert("t", rows);
    });
    auto list = "(" + placeholders(50'000) + ")", counted = std::string("SELECT count(*) FROM t WHERE id != ? AND id ");
    EXPECT_EQ(integer(database_, counted + "IN " + list + " AND n >= ?", parameters), 49'990);
    EXPECT_EQ(integer(database_, counted + "NOT IN " + list + " AND n >= ?", parameters), 10'000);
    database_.write([&](Database& writer) {
        writer.execute("DELETE FROM t WHERE id = ? OR id /* x */ in" + list + " AND n >= ?;", parameters);
        EXPECT_EQ(writer.changes(), 49'990);
        // Many different runs leave the kept statements usable.
        for (std::size_t length : {1'000, 2'000, 50'000}) {
            auto some = std::span(parameters).subspan(1, length);
            EXPECT_EQ(writer.query("SELECT id FROM t WHERE id IN (" + placeholders(length) + ")", some).size(), 10u);
        }
    });
}

/// A list beyond the limit must find what the same list below the limit finds, whatever the kinds on both sides.
TEST_F(LongListTest, LongListsCompareLikeShortOnes) {
    const std::vector<std::string> leftSides = {
        "i",     "r",       "t",       "n", "x", "b", "c", "t COLLATE NOCASE", "+i", "CAST(t AS INTEGER)",
        "i + 0", "t || ''", "lower(t)"};
    const ValueList values = {1, "1", 1.0, "1.0", "01", "a", "A", nullptr, tarvo::Bytes{"1"}, 2.5, "2.5", INT64_MAX};
    database_.write([&](Database& writer) {
        writer.execute("CREATE TABLE t (i INTEGER, r REAL, t TEXT, n NUMERIC, x, b BLOB, c TEXT COLLATE NOCASE)");
        for (auto& value : values) {
            ValueList row(7, value);
            writer.execute("INSERT INTO t VALUES (?,?,?,?,?,?,?)", row);
        }
        for (auto& left : leftSides)
            for (std::size_t i = 0; i < values.size(); ++i)
                for (std::string in : {" IN (", " NOT IN ("}) {
                    auto rowsFound = [&](std::size_t length) {
                        ValueList list(length, "no such value");
                        list.back() = values[i];
                        return writer.query("SELECT rowid FROM t WHERE " + left + in + placeholders(length) + ")", list)
                            .toMaps();
                    };
                    EXPECT_EQ(rowsFound(1'500), rowsFound(2)) << left << in << "value " << i;
                }
    });
}

TEST_F(LongListTest, OtherParametersBeyondTheLimitAreRefusedClearly) {
    ValueList parameters(40'000, 1);
    const std::vector<std::string> cases = {
        "SELECT " + placeholders(40'000),
        "SELECT 1 WHERE 1 IN (" + placeholders(100) + ") OR (" + placeholders(39'900) + ")",
        "SELECT 1 WHERE 1 IN (" + placeholders(40'001) + ")",
        "SELECT 1 WHERE 1 IN (0," + placeholders(40'000) + ")",
    };
    database_.read([&](Database& reader) {
        for (auto& sql : cases)
            EXPECT_EQ(failureOf([&] { reader.query(sql, parameters); }), FailureKind::misuse) << sql.substr(0, 40);
    });
}

TEST(LiftListsTest, OnlyWholeListsOfPlaceholdersAreLifted) {
    const std::string lifted = " (SELECT +value FROM kelva_values(0))";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"a IN (?,?)", "a IN" + lifted},
        {"a iN(\n? , -- no\n ?)--", "a iN" + lifted + "--"},
        {"'IN (?,?)' IN (?,?)", "'IN (?,?)' IN" + lifted},
        {"\"it's\" [IN (?,?)] `?` IN (?,?)", "\"it's\" [IN (?,?)] `?` IN" + lifted},
        {"/* IN (?,?) */ x -- IN (?,?)", "/* IN (?,?) */ x -- IN (?,?)"},
        {"min (?,?)", "min (?,?)"},
        {"a IN (?,1)", "a IN (?,1)"},
        {"a IN (?,?", "a IN (?,?"},
        {"a IN (?)", "a IN" + lifted},
        {"a IN ()", "a IN ()"},
        {"a IN (?1,?2) OR b IN (?,?)", "a IN (?1,?2) OR b IN (?,?)"},
        {"'unclosed IN (?,?)", "'unclosed IN (?,?)"},
    };
    for (auto& [sql, expected] : cases) EXPECT_EQ(liftLists(sql).sql, expected);
}

}  // namespace

}  // namespace kelva::tests
