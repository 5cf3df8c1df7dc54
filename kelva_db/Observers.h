#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "platform/Object.h"

namespace kelva {

class Database;

/// The kind of a row change; the order of the raw values is relied upon.
enum class DatabaseEvent { insert = 0, update = 1, delete_ = 2 };

/// Is notified of the writer's row changes as they happen, and of the end of the transaction. Held strongly until
/// removed. All calls come on the writer's queue, inside the transaction or right after it, one at a time: do little,
/// keep no reference to `Database`, never call the database object from `observeEvent` or `didChange`.
///
/// Rows that a savepoint rolled back are not reported, nor is anything of a transaction that was rolled back:
/// `didChange` comes when the transaction is about to end well. Table names come in lower case, the database name is
/// "main" or that of the attached database. A row that a REPLACE removes is not reported as a delete; the insert that
/// replaced it is reported. SQLite keeps silent about tables declared WITHOUT ROWID and about rows that go with a
/// dropped table.
///
/// An observer is notified of the transactions that begin after it was added. Once `remove` has returned no call
/// begins, also when it is called from inside `didCommit`; a call under way on the writer's queue comes to its end.
/// `didCommit` and `didRollback` come after the transaction: `Database` reads only, and new blocks may begin.
class TransactionObserver : public virtual tarvo::platform::Object {
public:
    /// Whether changes of this kind to this table are of interest. Asked often; must be quick.
    virtual bool observeEvent(DatabaseEvent type, std::string_view databaseName, std::string_view tableName) = 0;
    virtual void didChange(DatabaseEvent type, std::string_view databaseName, std::string_view tableName,
                           std::int64_t rowID) = 0;
    virtual void didCommit(Database& database) = 0;
    virtual void didRollback(Database& database) = 0;
};

/// Is notified after each commit of the tables that it changed, in lower case. On the writer's queue, as above.
class SimpleObserver : public virtual tarvo::platform::Object {
public:
    virtual void databaseChanged(const std::set<std::string>& tableNames) = 0;
};

/// Collects row changes by kind and table. A row that is inserted and then updated in one transaction stands in both.
class TransactionChanges {
public:
    using RowsByTable = std::map<std::string, std::set<std::int64_t>, std::less<>>;

    void add(DatabaseEvent type, std::string_view tableName, std::int64_t rowID);
    void reset();
    bool empty() const;
    const RowsByTable& inserted() const { return rows_[0]; }
    const RowsByTable& updated() const { return rows_[1]; }
    const RowsByTable& deleted() const { return rows_[2]; }

private:
    RowsByTable rows_[3];
};

}  // namespace kelva
