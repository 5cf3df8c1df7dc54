#include <filesystem>

#include "tests/tarvobase/Fixture.h"

#include "tarvobase/configuration/DatabaseConstants.h"
#include "tarvobase/database_layer/Statements.h"

namespace tarvo {
namespace {

using Right = Criteria::ColumnType;
using Pattern = Criteria::StringCriteria;

TEST(CriteriaTest, RendersTextAndParameters) {
    const std::tuple<Criteria, std::string, ValueList> cases[] = {
        {Criteria::or_({Criteria::equalTo("a", 7), Criteria::notEqualTo("b", "x"), Criteria::greaterThan("c", 1),
                        Criteria::lessThan("d", 2), Criteria::greaterThanOrEqualTo("e", 3),
                        Criteria::lessThanOrEqualTo("f", Value())}),
         "(a = ? OR b != ? OR c > ? OR d < ? OR e >= ? OR f <= ?)",
         {7, "x", 1, 2, 3, Value()}},
        {Criteria::equalTo("a", Right::column("b")), "a = b", {}},
        {Criteria::and_({Criteria::isNull("a"), Criteria::isNotNull("b"), Criteria::between("c", 1, 2),
                         Criteria::notBetween("d", 3, 4), Criteria::exists("SELECT 1 WHERE ?", {5}),
                         Criteria::notExists("SELECT 1", {})}),
         "(a IS NULL AND b IS NOT NULL AND c BETWEEN ? AND ? AND d NOT BETWEEN ? AND ? AND EXISTS (SELECT 1 WHERE ?) "
         "AND NOT EXISTS (SELECT 1))",
         {1, 2, 3, 4, 5}},
        {Criteria::in("a", {1, 2, 3}), "a IN (?,?,?)", {1, 2, 3}},
        {Criteria::in("a", {}), "a IN ()", {}},
        {Criteria::notIn("a", {1}), "a NOT IN (?)", {1}},
        {Criteria::like("a", "x", Pattern::startsWith), "a LIKE ?", {"x%"}},
        {Criteria::like("a", "x", Pattern::endsWith), "a LIKE ?", {"%x"}},
        {Criteria::notLike("a", "5%_", Pattern::contains), "a NOT LIKE ?", {"%5%_%"}},
        {Criteria::and_({}), "()", {}},
        {Criteria::or_({Criteria::equalTo("a", 1), Criteria::and_({Criteria::equalTo("b", 2), Criteria::isNull("c")}),
                        Criteria::in("d", {3})}),
         "(a = ? OR (b = ? AND c IS NULL) OR d IN (?))",
         {1, 2, 3}},
        {Criteria::equals({{"a", 1}, {"b", ValueList{2, 3}}}), "(a = ? AND b IN (?,?))", {1, 2, 3}},
    };
    for (auto& [criteria, sql, parameters] : cases) {
        EXPECT_EQ(criteria.sql(), sql);
        EXPECT_EQ(criteria.parameters(), parameters) << sql;
    }
}

/// Returns a query after a change to its members.
template <class Q>
Q with(Q query, auto change) {
    change(query);
    return query;
}

TEST(StatementTest, RendersTextAndParameters) {
    auto limited = [](std::optional<std::int64_t> limit, std::optional<std::int64_t> offset) {
        return with(FetchQuery("t", Criteria::equalTo("a", 1)),
                    [&](auto& query) { query.limit = limit, query.offset = offset; });
    };
    auto plainInsert = with(InsertQuery("t", {{"a", 1}}), [](auto& query) { query.replaceOnConflict = false; });
    auto columns = with(FetchQuery("t"), [](auto& query) {
        query.columns = {"a", "b"};
        query.sortBy = {SortDescriptor({.colName = "a"}), SortDescriptor::customOrderBy("b")};
    });
    auto mapped = with(CopyQuery("s", "d", 5), [](auto& query) { query.columnMap = {{"x", "a"}, {"y", "b"}}; });
    auto ignoring =
        with(UpdateQuery("t", {{"a", 1}, {"b", 2}}, {{"id", 9}}), [](auto& query) { query.ignoreOnError = true; });
    auto check = [](const Query& query, const std::string& sql, const ValueList& parameters) {
        EXPECT_EQ(query.sql(), sql);
        EXPECT_EQ(query.parameters(), parameters) << sql;
    };
    check(FetchQuery("t", std::optional<ValueMap>(ValueMap())), "SELECT * FROM t WHERE ()", {});
    check(columns, "SELECT a, b FROM t ORDER BY  a COLLATE NOCASE ASC, b", {});
    check(limited(10, std::nullopt), "SELECT * FROM t WHERE a = ? LIMIT ?", {1, 10});
    check(limited(std::nullopt, 20), "SELECT * FROM t WHERE a = ? LIMIT ? OFFSET ?", {1, -1, 20});
    check(limited(10, 20).filter(Criteria::isNull("b")), "SELECT * FROM t WHERE a = ? AND b IS NULL LIMIT ? OFFSET ?",
          {1, 10, 20});
    check(InsertQuery("t", {{"a", 1}, {"b", 2}}), "INSERT OR REPLACE INTO t (a,b) VALUES (?,?)", {1, 2});
    check(plainInsert, "INSERT INTO t (a) VALUES (?)", {1});
    check(ignoring.set({{"a", 3}, {"c", 4}}), "UPDATE OR IGNORE t SET a = ? , b = ? , c = ?  WHERE (id = ?)",
          {3, 2, 4, 9});
    check(UpdateQuery("t", {{"a", 1}}), "UPDATE t SET a = ? ", {1});
    check(DeleteQuery("t", ValueMap{{"a", 1}}).filter(Criteria::isNull("b")),
          "DELETE FROM t WHERE (a = ?) AND b IS NULL", {1});
    check(CopyQuery("s", "d"), "INSERT INTO d SELECT * FROM s", {});
    check(mapped.filter(ValueMap{{"a", 1}}), "INSERT INTO d (x, y) SELECT a, b FROM s WHERE (a = ?) LIMIT ?", {1, 5});
}

class DatabaseConstantsTest : public FoundationTest {};

TEST_F(DatabaseConstantsTest, NamesTheFileOfEachAccount) {
    DatabaseConstants constants;
    auto location = folder() + "/Databases";
    EXPECT_EQ(constants.databaseName(), location + "/TarvoDatabaseForBrenUID1001.sqlite");
    EXPECT_TRUE(std::filesystem::is_directory(location));
    signIn(std::nullopt);
    EXPECT_EQ(constants.databaseName(), location + "/TarvoDatabaseForBrenUID.sqlite");
    auto outside = constants.databaseName("../../etc/x");
    EXPECT_EQ(std::filesystem::path(outside).parent_path(), location);
    EXPECT_NE(outside, constants.databaseName("..%2F..%2Fetc%2Fx"));
}

}  // namespace
}  // namespace tarvo
