#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/Describe.h"
#include "platform/Object.h"
#include "platform/Rows.h"
#include "tarvobase/database_layer/Statements.h"

namespace kelva {
class TransactionObserver;
class SimpleObserver;
}  // namespace kelva

namespace tarvo {

/// Types of the columns that `create` declares; the raw text is the case's name.
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

/// The one interface of the local database. From any thread; every operation blocks its caller until it is done.
///
/// Nothing here throws or reports a failure: a failure is logged and dropped. A write that fails returns normally with
/// no effect. A read that fails is absent; a read that found nothing is empty.
class DatabaseAdapter : public virtual platform::Object {
public:
    using ColumnDefinitions = std::vector<std::pair<std::string, TableColumnType>>;
    struct Statement {
        std::string rawQuery;
        std::optional<ValueList> parameters;
    };

    virtual std::string databaseName() const = 0;

    virtual void createTable(const std::string& rawQuery) = 0;
    /// Changes nothing when the table exists.
    void create(const std::string& table, const ColumnDefinitions& columnDefinitions,
                const std::vector<std::string>& primaryKey) {
        create(table, columnDefinitions, primaryKey, {});
    }
    virtual void create(const std::string& table, const ColumnDefinitions& columnDefinitions,
                        const std::vector<std::string>& primaryKey,
                        const std::vector<std::vector<std::string>>& uniqueKeys) = 0;

    /// Stores one row. A row with the same primary or unique key is replaced.
    virtual void insertInto(const std::string& tableName, const ValueMap& values) = 0;
    /// Stores many rows in one transaction, all or none.
    void insertInto(const std::string& tableName, const std::vector<ValueMap>& values) {
        insertInto(tableName, MapRowSource(values));
    }
    virtual void insertInto(const std::string& tableName, const RowSource& rows) = 0;
    /// Stores what the table takes of many rows, in one transaction. Gives the places of the rows that break a rule of
    /// the table; absent when nothing was stored for another reason.
    virtual std::optional<std::vector<std::size_t>> insertAccepted(const std::string& tableName,
                                                                   const RowSource& rows) = 0;
    void insertObject(const InsertQuery& query) { execute(query); }
    void insertObjects(const std::vector<InsertQuery>& queries) { executeAll(queries); }

    virtual void update(const std::string& tableName, const ValueMap& values, const Criteria& criteria) = 0;
    /// One map with the criteria at the same index each. There must be as many criteria as maps, or more.
    virtual void update(const std::string& tableName, const std::vector<ValueMap>& values,
                        const std::vector<Criteria>& criteria) = 0;
    void update(const UpdateQuery& query) { execute(query); }
    void update(const std::vector<UpdateQuery>& queries) { executeAll(queries); }

    virtual std::optional<Rows> fetchObjects(const std::string& rawQuery,
                                             const std::optional<ValueList>& parameters) = 0;
    std::optional<Rows> fetchObjects(const FetchQuery& query) { return fetchObjects(query.sql(), query.parameters()); }
    std::optional<Rows> fetchAllObjects(const std::string& tableName);

    /// `from` is the offset.
    std::optional<std::int64_t> count(const std::string& tableName, const std::optional<Criteria>& criteria,
                                      std::optional<std::int64_t> from = std::nullopt,
                                      std::optional<std::int64_t> limit = std::nullopt);
    /// Overwrites the `columns` of the query.
    std::optional<std::int64_t> count(FetchQuery& query);

    void deleteObjects(const std::string& tableName, const Criteria& criteria);
    void deleteAllObjects(const std::string& tableName);
    void deleteObject(const DeleteQuery& query) { execute(query); }
    void deleteObjects(const std::vector<DeleteQuery>& queries) { executeAll(queries); }
    virtual void dropTable(const std::string& tablename) = 0;

    virtual void attachDatabase(const std::string& fromPath, const std::string& withName) = 0;
    virtual void detachDatabase(const std::string& named) = 0;
    void copyRecord(const CopyQuery& query) { execute(query); }

    void execute(const std::string& rawQuery, const std::optional<ValueList>& parameters) {
        execute({Statement{rawQuery, parameters}});
    }
    /// One transaction: the first failure stops the list and undoes all of it. A value that cannot be bound stops the
    /// call before any statement runs.
    virtual void execute(const std::vector<Statement>& queries) = 0;
    void execute(const Query& query) { execute(query.sql(), query.parameters()); }
    /// The whole list as one transaction.
    void execute(const std::vector<std::reference_wrapper<const Query>>& queries);

    /// Columns that a table really has, empty when there is no such table. Kept until the schema changes.
    virtual std::vector<std::string> columnNames(const std::string& tableName) = 0;

private:
    template <class T>
    void executeAll(const std::vector<T>& queries) {
        execute(std::vector<std::reference_wrapper<const Query>>(queries.begin(), queries.end()));
    }
};

/// The observers' side of the database. Observers die with the connection: they are added again after each opening.
class DatabaseTransactionAdapter : public virtual platform::Object {
public:
    virtual void add(std::shared_ptr<kelva::TransactionObserver> transactionObserver) = 0;
    virtual void remove(const std::shared_ptr<kelva::TransactionObserver>& transactionObserver) = 0;
    virtual void add(std::shared_ptr<kelva::SimpleObserver> simpleObserver) = 0;
    virtual void remove(const std::shared_ptr<kelva::SimpleObserver>& simpleObserver) = 0;
    virtual void removeAllObserver() = 0;
};

}  // namespace tarvo
