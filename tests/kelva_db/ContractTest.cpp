#include "tests/kelva_db/DatabaseFixture.h"
#include "tests/support/OpaqueValue.h"

namespace kelva::tests {

namespace {

enum class Sort { pool, memory, fileQueue };

struct Celsius final : tarvo::ValueObject, DatabaseValueConvertible {
    std::string_view typeName() const override { return "Celsius"; }
    DatabaseValue databaseValue() const override { return DatabaseValue(21.5); }
};

/// What every database promises, whatever it stores in.
class ContractTest : public testing::TestWithParam<Sort> {
protected:
    void SetUp() override {
        auto path = GetParam() == Sort::memory ? "file::memory:?cache=shared" : folder_.file("a.db");
        if (GetParam() == Sort::pool)
            database_ = std::make_shared<DatabasePool>(path, rawConfiguration());
        else
            database_ = std::make_shared<DatabaseQueue>(path, rawConfiguration());
        execute(*database_, "CREATE TABLE people (id TEXT NOT NULL UNIQUE, age INTEGER, note)");
    }

    std::int64_t count() { return integer(*database_, "SELECT count(*) FROM people"); }
    static void addPerson(Database& writer, const std::string& id) {
        writer.insert("people", ValueMap{{"id", id}, {"age", 30}});
    }

    Folder folder_;
    std::shared_ptr<KelvaDatabase> database_;
};

INSTANTIATE_TEST_SUITE_P(Databases, ContractTest, testing::Values(Sort::pool, Sort::memory, Sort::fileQueue),
                         [](auto& info) {
                             return info.param == Sort::pool ? "Pool" : info.param == Sort::memory ? "Memory" : "File";
                         });

TEST_P(ContractTest, ThrowUndoesEverythingAndIsRethrown) {
    EXPECT_THROW(database_->write([](Database& writer) {
        addPerson(writer, "a");
        throw std::string("mine");
    }),
                 std::string);
    EXPECT_EQ(count(), 0);
    database_->inTransaction([](Database& writer) {
        addPerson(writer, "b");
        return TransactionCompletion::rollback;
    });
    EXPECT_EQ(count(), 0);
    database_->write([](Database& writer) { addPerson(writer, "c"); });
    EXPECT_EQ(count(), 1);
}

TEST_P(ContractTest, WriteInsideWriteIsASavepoint) {
    database_->write([&](Database& outer) {
        addPerson(outer, "outer");
        EXPECT_THROW(database_->write([](Database& inner) {
            addPerson(inner, "inner");
            throw std::runtime_error("inner");
        }),
                     std::runtime_error);
        database_->inTransaction([](Database& inner) {
            addPerson(inner, "given up");
            return TransactionCompletion::rollback;
        });
        database_->write([](Database& inner) { addPerson(inner, "kept"); });
        EXPECT_EQ(count(), 2) << "a read inside a write sees what the write has done";
    });
    EXPECT_EQ(count(), 2);
}

TEST_P(ContractTest, ReadsDoNotWrite) {
    database_->read([&](Database& reader) {
        EXPECT_EQ(failureOf([&] { addPerson(reader, "a"); }), FailureKind::readOnly);
        EXPECT_EQ(failureOf([&] { database_->write([](Database&) {}); }), FailureKind::misuse);
        database_->read([](Database& inner) { EXPECT_TRUE(inner.query("SELECT * FROM people").empty()); });
    });
    database_->write([&](Database&) {
        database_->read([&](Database& reader) {
            EXPECT_EQ(failureOf([&] { addPerson(reader, "a"); }), FailureKind::readOnly);
            EXPECT_EQ(failureOf([&] { database_->write([](Database&) {}); }), FailureKind::misuse);
        });
    });
}

TEST_P(ContractTest, NothingWorksAfterClosing) {
    database_->write(
        [&](Database&) { EXPECT_EQ(failureOf([&] { database_->close(); }), FailureKind::misuse) << "inside a block"; });
    database_->close();
    database_->close();
    EXPECT_EQ(failureOf([&] { database_->read([](Database&) {}); }), FailureKind::misuse);
    EXPECT_EQ(failureOf([&] { database_->write([](Database&) {}); }), FailureKind::misuse);
    EXPECT_EQ(failureOf([&] { database_->attachDatabase(folder_.file("b.db"), "b"); }), FailureKind::misuse);
}

TEST_P(ContractTest, FailuresAreClassified) {
    const std::vector<std::pair<std::string, FailureKind>> cases = {
        {"SELECT nothing FROM people", FailureKind::schema},
        {"SELEC 1", FailureKind::schema},
        {"INSERT INTO people (id) VALUES (NULL)", FailureKind::constraint},
        {"INSERT INTO people (id) VALUES ('a'), ('a')", FailureKind::constraint},
        {"COMMIT", FailureKind::misuse},
        {"SAVEPOINT mine", FailureKind::misuse},
    };
    database_->write([&](Database& writer) {
        for (auto& [sql, kind] : cases) {
            EXPECT_EQ(failureOf([&, &sql = sql] { writer.execute(sql); }), kind) << sql;
            EXPECT_NO_THROW(addPerson(writer, sql)) << "the transaction goes on after " << sql;
        }
    });
    try {
        execute(*database_, "SELECT 1 WHERE 'secret' 'word'");
        ADD_FAILURE();
    } catch (const DatabaseError& error) {
        EXPECT_EQ(std::string(error.what()).find("word"), std::string::npos) << error.what();
    }
}

TEST_P(ContractTest, StatementsOfOneTextRunInOrder) {
    database_->write([](Database& writer) {
        ValueList parameters = {"a;'", 1};
        writer.execute(
            "-- first; a comment\nCREATE TABLE log (x); CREATE TRIGGER t AFTER INSERT ON people BEGIN INSERT INTO log "
            "VALUES "
            "(new.id); SELECT 1; END; INSERT INTO people (id, age) VALUES (?, ?); ; /* end */",
            parameters);
        EXPECT_EQ(writer.query("SELECT x FROM log").front().cell(0).asText(), "a;'");
        EXPECT_EQ(failureOf([&] { writer.execute("DELETE FROM log; SELECT ?"); }), FailureKind::misuse);
        EXPECT_EQ(failureOf([&] { writer.execute("SELECT 1", parameters); }), FailureKind::misuse);
        EXPECT_EQ(failureOf([&] { writer.query("SELECT ?", parameters); }), FailureKind::misuse);
        EXPECT_EQ(failureOf([&] { writer.query("SELECT 1; SELECT 2"); }), FailureKind::misuse);
    });
}

TEST_P(ContractTest, ValuesComeBackAsTheirStoredForm) {
    auto celsius = std::make_shared<Celsius>();
    const std::vector<std::pair<Value, Value>> cases = {
        {nullptr, nullptr},
        {true, 1},
        {INT64_MIN, INT64_MIN},
        {2.5, 2.5},
        {"", ""},
        {std::string("a\0b", 3), std::string("a\0b", 3)},
        {tarvo::Bytes{""}, tarvo::Bytes{""}},
        {tarvo::Bytes{std::string("\0\xff", 2)}, tarvo::Bytes{std::string("\0\xff", 2)}},
        {ValueList{1, "x"}, "[1,\"x\"]"},
        {ValueMap{{"k", 1}}, tarvo::Bytes{"{\"k\":1}"}},
        {std::shared_ptr<const tarvo::ValueObject>(celsius), 21.5},
    };
    database_->write([&](Database& writer) {
        for (auto& [value, stored] : cases) {
            auto describe = std::string(tarvo::platform::kindName(value.kind()));
            EXPECT_EQ(writer.query("SELECT ? AS x", std::span(&value, 1)).front().valueOf("x"), stored) << describe;
            EXPECT_EQ(writer.query("SELECT " + literal(value) + " AS x").front().valueOf("x"), stored) << describe;
            writer.insert("people", ValueMap{{"id", describe}, {"note", value}});
            auto rows = writer.query("SELECT note FROM people WHERE id = " + literal(describe));
            EXPECT_EQ(rows.front().valueOf("note"), stored) << describe;
        }
    });
}

TEST_P(ContractTest, CellsThatABatchLacksTakeTheirDefaults) {
    const std::vector<ValueMap> rows = {{{"id", "a"}, {"kind", "mine"}},
                                        {{"id", "b"}},
                                        {{"id", "c"}},
                                        {{"kind", nullptr}, {"id", "d"}},
                                        {{"note", "n"}, {"id", "a"}}};
    database_->write([&](Database& writer) {
        writer.execute("CREATE TABLE kinds (id TEXT UNIQUE, kind TEXT DEFAULT 'usual', note)");
        writer.insert("kinds", rows);
        auto stored = writer.query("SELECT id || ':' || ifnull(kind, '-') AS x FROM kinds ORDER BY id").toMaps();
        EXPECT_EQ(stored,
                  (std::vector<ValueMap>{{{"x", "a:usual"}}, {{"x", "b:usual"}}, {{"x", "c:usual"}}, {{"x", "d:-"}}}));
        EXPECT_EQ(failureOf([&] { writer.insert("kinds", rows, OnConflict::none); }), FailureKind::constraint);
        writer.insert("kinds", std::vector<ValueMap>{{{"id", "d"}, {"kind", "late"}}}, OnConflict::ignore);
        EXPECT_TRUE(writer.query("SELECT kind FROM kinds WHERE id = 'd'").cell(0, 0).isNull()) << "ignored";
        writer.execute("DELETE FROM kinds WHERE id <> 'd'");
        auto late = rows;
        late[3] = {{"id", "x"}, {"absent", 1}};
        EXPECT_NE(failureOf([&] { writer.insert("kinds", late); }), std::nullopt);
    });
    EXPECT_EQ(integer(*database_, "SELECT count(*) FROM kinds"), 1) << "a batch that fails leaves nothing";
}

TEST_P(ContractTest, BatchThatCannotBeStoredLeavesNothing) {
    auto opaque = tarvo::opaqueValue();
    std::vector<ValueMap> rows(50);
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = {{"id", std::to_string(i)}};
    rows.back().set("note", opaque);
    ValueMap wide;
    for (int i = 0; i < 2001; ++i) wide.set("column" + std::to_string(i), i);
    database_->write([&](Database& writer) {
        EXPECT_EQ(failureOf([&] { writer.insert("people", rows); }), FailureKind::misuse);
        EXPECT_EQ(failureOf([&] { writer.query("SELECT ?", std::span(&opaque, 1)); }), FailureKind::misuse);
        EXPECT_EQ(failureOf([&] { writer.insert("people", wide); }), FailureKind::misuse);
        EXPECT_EQ(failureOf([&] { writer.insert("people", ValueMap{{"absent", 1}}); }), FailureKind::schema);
        rows.back() = {{"id", nullptr}};
        EXPECT_EQ(failureOf([&] { writer.insert("people", rows); }), FailureKind::constraint);
    });
    EXPECT_EQ(count(), 0);
}

TEST_P(ContractTest, TablesAreDefinedWithKeysAndOddNames) {
    using Type = TableDefinition::ColumnType;
    database_->write([](Database& writer) {
        for (int time = 0; time < 2; ++time)
            writer.create("odd \"name", false, true, [](TableDefinition& table) {
                table.column("order", Type::string);
                table.column("a.b", Type::integer);
                table.column("key id", Type::text);
                table.primaryKey({"key id"});
                table.uniqueKey({"order", "a.b"});
            });
        const ValueMap row = {{"key id", "k"}, {"order", "007"}, {"a.b", 1}};
        writer.insert("odd \"name", row);
        writer.execute(
            UpdateQuery("odd \"name").set({{"a.b", 2}}).filter("\"order\" = ? OR 0", {"007"}).filter("1", {}));
        EXPECT_EQ(writer.columnNames("odd \"name"), (std::vector<std::string>{"order", "a.b", "key id"}));
        EXPECT_EQ(writer.query("SELECT * FROM \"odd \"\"name\"").front().toMap(),
                  (ValueMap{{"key id", "k"}, {"order", "007"}, {"a.b", 2}}));
        writer.drop("odd \"name", true);
        writer.drop("odd \"name", true);
        EXPECT_TRUE(writer.columnNames("odd \"name").empty());
        EXPECT_EQ(failureOf([&] { writer.drop("odd \"name", false); }), FailureKind::schema);
    });
}

TEST_P(ContractTest, ColumnNamesFollowTheSchema) {
    auto names = [&] {
        std::vector<std::string> result;
        database_->read([&](Database& reader) { result = reader.columnNames("people"); });
        return result;
    };
    EXPECT_EQ(names().size(), 3u);
    execute(*database_, "ALTER TABLE people ADD COLUMN city");
    EXPECT_EQ(names(), (std::vector<std::string>{"id", "age", "note", "city"}));
    database_->read([](Database& reader) {
        EXPECT_EQ(reader.query("SELECT * FROM people").columns().size(), 4u) << "also without a row";
        EXPECT_TRUE(reader.columnNames("nowhere").empty());
    });
    execute(*database_, "CREATE TABLE nowhere (x)");
    database_->read([](Database& reader) {
        EXPECT_EQ(reader.columnNames("nowhere"), std::vector<std::string>{"x"}) << "made by another connection";
    });
    database_->write([](Database& writer) {
        EXPECT_EQ(writer.columnNames("nowhere").size(), 1u);
        for (auto change : {"ALTER TABLE nowhere ADD COLUMN y", "/**/ ALTER TABLE nowhere ADD COLUMN z"}) {
            auto before = writer.columnNames("nowhere").size();
            writer.execute(change);
            EXPECT_EQ(writer.columnNames("nowhere").size(), before + 1) << "by this transaction";
        }
        EXPECT_ANY_THROW(writer.inSavepoint([&] {
            writer.execute("DROP TABLE nowhere");
            EXPECT_TRUE(writer.columnNames("nowhere").empty());
            throw 1;
        }));
        EXPECT_EQ(writer.columnNames("nowhere").size(), 3u) << "undone";
    });
}

}  // namespace

}  // namespace kelva::tests
