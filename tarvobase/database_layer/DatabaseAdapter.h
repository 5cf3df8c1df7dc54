#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Describe.h"
#include "platform/FunctionRef.h"
#include "platform/Object.h"
#include "platform/Rows.h"
#include "tarvobase/database_layer/Statements.h"

namespace kelva {
class TransactionObserver;
class SimpleObserver;
}  // namespace kelva

namespace tarvo {

/// The types of the columns that `create` declares; the raw text is the case's name.
enum class TableColumnType {
    int_,
    uint,
    float_,
    double_,
    character,
    string,
    bool_,
    date,
    data,
    url,
    integer,
    text,
    real,
    blob
};

template <>
struct EnumCases<TableColumnType> {
    static constexpr EnumCase<TableColumnType> cases[] = {{TableColumnType::int_, "int"},
                                                          {TableColumnType::uint, "uint"},
                                                          {TableColumnType::float_, "float"},
                                                          {TableColumnType::double_, "double"},
                                                          {TableColumnType::character, "character"},
                                                          {TableColumnType::string, "string"},
                                                          {TableColumnType::bool_, "bool"},
                                                          {TableColumnType::date, "date"},
                                                          {TableColumnType::data, "data"},
                                                          {TableColumnType::url, "url"},
                                                          {TableColumnType::integer, "integer"},
                                                          {TableColumnType::text, "text"},
                                                          {TableColumnType::real, "real"},
                                                          {TableColumnType::blob, "blob"}};
};

/// The one interface of the local database. It may be used from any thread; every operation blocks its caller until it
/// is done.
///
/// Nothing here throws. A write returns whether it was stored; one that fails is logged and has no effect. A read that
/// fails returns nullopt, and one that finds no row returns an empty answer. Inside a `transaction` "stored" means that
/// the transaction holds it: it is lost if the transaction is undone.
class DatabaseAdapter : public virtual platform::Object {
public:
    using ColumnDefinitions = std::vector<std::pair<std::string, TableColumnType>>;
    struct Statement {
        std::string rawQuery;
        std::optional<ValueList> parameters;
    };

    virtual std::string databaseName() const = 0;

    /// Returns what tells this database from every other one, also from a new one in its place: a random text that is
    /// stored in it when it is first asked for. Flags outside the database that speak of its content name it. Returns
    /// nullopt if the database is not open, or does not take the text.
    std::optional<std::string> identity();

    /// Runs `work` as one transaction over all tables that it writes, and returns whether it was committed. `name` says
    /// in log lines what failed.
    ///
    /// The transaction commits when `work` returns true and no write in it failed. Otherwise all of it is undone. A
    /// failed write fails every transaction around it, even if its caller ignored the answer.
    ///
    /// A transaction inside another one is a savepoint: true means that the outer one holds it, and may still undo it.
    /// A savepoint whose `work` returns false without a failed write undoes itself only. It costs a copy of each page
    /// that it changes, so a hot path begins none of its own.
    ///
    /// `work` runs on the calling thread, and reads of this thread see its writes. Writes of other threads wait, so it
    /// must not wait for a thread that may write, send anything, or call out. Observers are notified once, after the
    /// outermost commit, of what was not undone.
    [[nodiscard]] virtual bool transaction(std::string_view name, platform::FunctionRef<bool()> work) = 0;

    /// Runs `work` as a part of the transaction that this thread is in, without a savepoint: false fails that
    /// transaction whole. Outside a transaction it is one of its own.
    [[nodiscard]] virtual bool joinTransaction(std::string_view name, platform::FunctionRef<bool()> work) {
        return transaction(name, work);
    }

    /// Runs `work` like `transaction`, except that a write which SQLite rejects costs itself only: a table that is
    /// missing or exists already, a column, a rule of the table. For content of the server, whose schema and rows need
    /// not fit. Returns false if the database could not store the content that fits: the disk is full, another process
    /// holds the lock, the file is damaged. Each write inside is a savepoint.
    [[nodiscard]] virtual bool tolerantTransaction(std::string_view name, platform::FunctionRef<bool()> work) {
        return transaction(name, work);
    }

    /// Runs the statements of a text of the server, which makes its tables. They may make, change, drop and fill tables
    /// and indexes. A statement that wants anything else (settings, other files, triggers, queries) is left out and
    /// logged by its kind, which fails nothing; one that takes longer than some seconds is stopped and fails.
    virtual bool createTable(const std::string& rawQuery) = 0;
    /// Runs the server's statements for tables as one `tolerantTransaction`, so a table that exists already costs
    /// nothing. Returns false if the database could not store the tables.
    bool createTables(const std::vector<std::string>& rawQueries);
    /// Makes a table; one that exists already stays as it is, which is a success.
    bool create(const std::string& table, const ColumnDefinitions& columnDefinitions,
                const std::vector<std::string>& primaryKey) {
        return create(table, columnDefinitions, primaryKey, {});
    }
    virtual bool create(const std::string& table, const ColumnDefinitions& columnDefinitions,
                        const std::vector<std::string>& primaryKey,
                        const std::vector<std::vector<std::string>>& uniqueKeys) = 0;

    /// Stores one row. A row with the same primary or unique key is replaced.
    virtual bool insertInto(const std::string& tableName, const ValueMap& values) = 0;
    /// Stores many rows in one transaction, all or none.
    bool insertInto(const std::string& tableName, const std::vector<ValueMap>& values) {
        return insertInto(tableName, MapRowSource(values));
    }
    virtual bool insertInto(const std::string& tableName, const RowSource& rows) = 0;
    /// Stores what the table takes of many rows, in one transaction. Returns the places of the rows that break a rule
    /// of the table, which fail no transaction; returns nullopt if nothing was stored for another reason.
    virtual std::optional<std::vector<std::size_t>> insertAccepted(const std::string& tableName,
                                                                   const RowSource& rows) = 0;
    /// Updates rows by a batch, in one transaction. A row sets the cells that it has in the rows whose columns `keys`,
    /// which are places of the batch, equal its own, and leaves other columns alone. Returns as `insertAccepted` does.
    /// Cells must be flat.
    virtual std::optional<std::vector<std::size_t>> updateAccepted(const std::string& tableName, const RowSource& rows,
                                                                   std::span<const std::size_t> keys) = 0;
    bool insertObject(const InsertQuery& query) { return execute(query); }
    bool insertObjects(const std::vector<InsertQuery>& queries) { return executeAll(queries); }

    virtual bool update(const std::string& tableName, const ValueMap& values, const Criteria& criteria) = 0;
    /// Updates by each map with the criteria at the same index, each in a transaction of its own. There must be as many
    /// criteria as maps, or more. Returns whether all of them were stored.
    virtual bool update(const std::string& tableName, const std::vector<ValueMap>& values,
                        const std::vector<Criteria>& criteria) = 0;
    bool update(const UpdateQuery& query) { return execute(query); }
    bool update(const std::vector<UpdateQuery>& queries) { return executeAll(queries); }

    virtual std::optional<Rows> fetchObjects(const std::string& rawQuery,
                                             const std::optional<ValueList>& parameters) = 0;
    std::optional<Rows> fetchObjects(const FetchQuery& query) { return fetchObjects(query.sql(), query.parameters()); }
    std::optional<Rows> fetchAllObjects(const std::string& tableName);

    /// Counts rows; `from` is the offset. Returns nullopt if the read fails or the offset passes over the one row of
    /// the count.
    std::optional<std::int64_t> count(const std::string& tableName, const std::optional<Criteria>& criteria,
                                      std::optional<std::int64_t> from = std::nullopt,
                                      std::optional<std::int64_t> limit = std::nullopt);
    /// Counts the rows of a query, and overwrites its `columns`.
    std::optional<std::int64_t> count(FetchQuery& query);

    bool deleteObjects(const std::string& tableName, const Criteria& criteria);
    bool deleteAllObjects(const std::string& tableName);
    bool deleteObject(const DeleteQuery& query) { return execute(query); }
    bool deleteObjects(const std::vector<DeleteQuery>& queries) { return executeAll(queries); }
    virtual bool dropTable(const std::string& tablename) = 0;

    virtual bool attachDatabase(const std::string& fromPath, const std::string& withName) = 0;
    virtual bool detachDatabase(const std::string& named) = 0;
    bool copyRecord(const CopyQuery& query) { return execute(query); }

    bool execute(const std::string& rawQuery, const std::optional<ValueList>& parameters) {
        return execute({Statement{rawQuery, parameters}});
    }
    /// Runs a list of statements as one transaction: the first failure stops the list and undoes all of it. A value
    /// that cannot be bound stops the call before any statement runs.
    virtual bool execute(const std::vector<Statement>& queries) = 0;
    bool execute(const Query& query) { return execute(query.sql(), query.parameters()); }
    /// Runs the whole list as one transaction.
    bool execute(const std::vector<std::reference_wrapper<const Query>>& queries);

    /// Returns the columns that a table really has, an empty list if there is no such table. They are kept until the
    /// schema changes.
    virtual std::vector<std::string> columnNames(const std::string& tableName) = 0;

private:
    template <class T>
    bool executeAll(const std::vector<T>& queries) {
        return execute(std::vector<std::reference_wrapper<const Query>>(queries.begin(), queries.end()));
    }
};

/// The observers' side of the database. Observers end with the connection: they are added again after each opening.
class DatabaseTransactionAdapter : public virtual platform::Object {
public:
    virtual void add(std::shared_ptr<kelva::TransactionObserver> transactionObserver) = 0;
    virtual void remove(const std::shared_ptr<kelva::TransactionObserver>& transactionObserver) = 0;
    virtual void add(std::shared_ptr<kelva::SimpleObserver> simpleObserver) = 0;
    virtual void remove(const std::shared_ptr<kelva::SimpleObserver>& simpleObserver) = 0;
    virtual void removeAllObserver() = 0;
};

}  // namespace tarvo
