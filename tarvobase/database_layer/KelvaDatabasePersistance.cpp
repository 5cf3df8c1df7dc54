#include "tarvobase/database_layer/KelvaDatabasePersistance.h"

#include <algorithm>

#include "kelva_db/KelvaDatabase.h"
#include "platform/DispatchQueue.h"
#include "platform/Log.h"
#include "platform/ProgrammingError.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/database_layer/RunningTransaction.h"

namespace tarvo {

namespace {

using OpeningFailure = KelvaDatabasePersistance::OpeningFailure;

OpeningFailure failureOf(const kelva::DatabaseError& error) {
    using Kind = OpeningFailure::Kind;
    switch (error.kind()) {
        case kelva::FailureKind::wrongKey:
            return {Kind::wrongPassphrase, error.what()};
        case kelva::FailureKind::notEncrypted:
            return {Kind::notEncrypted, error.what()};
        case kelva::FailureKind::corrupt:
            return {Kind::damaged, error.what()};
        case kelva::FailureKind::cannotOpen:
        case kelva::FailureKind::readOnly:
            return {Kind::cannotOpen, error.what()};
        default:
            return {Kind::other, error.what()};
    }
}

// Parameters are values of records, so a log line names only their kinds.
std::string kindsOf(std::span<const Value> values) {
    std::string kinds = "[";
    for (auto& value : values) kinds.append(kinds.size() > 1 ? ", " : "").append(platform::kindName(value.kind()));
    return kinds + "]";
}

kelva::TableDefinition::ColumnType libraryType(TableColumnType type) {
    return kelva::TableDefinition::fromRawText(rawText(type)).value_or(kelva::TableDefinition::ColumnType::text);
}

ValueList boundValues(const ValueMap& map) {
    ValueList values;
    for (auto& entry : map) values.push_back(entry.value);
    return values;
}

const ValueList& orEmpty(const std::optional<ValueList>& parameters) {
    static const ValueList none;
    return parameters ? *parameters : none;
}

/// Returns whether SQLite found fault with a statement or its values, as opposed to a database that cannot store.
bool isRejection(kelva::FailureKind kind) {
    return kind == kelva::FailureKind::schema || kind == kelva::FailureKind::constraint ||
           kind == kelva::FailureKind::misuse;
}

/// A run of neighbouring rows of a batch.
class RowSlice final : public RowSource {
public:
    RowSlice(const RowSource& batch, std::size_t first, std::size_t count)
        : batch_(batch), first_(first), count_(count) {}
    std::span<const std::string> columns() const override { return batch_.columns(); }
    std::size_t rowCount() const override { return count_; }
    ValueView cell(std::size_t row, std::size_t column) const override { return batch_.cell(first_ + row, column); }
    bool isUniform() const override { return batch_.isUniform(); }
    bool hasCell(std::size_t row, std::size_t column) const override { return batch_.hasCell(first_ + row, column); }
    bool mayHoldObjects() const override { return batch_.mayHoldObjects(); }

private:
    const RowSource& batch_;
    const std::size_t first_, count_;
};

/// Stores a piece of a batch. A piece that breaks a rule of the table is halved, down to the rows that break it.
void insertHalving(kelva::Database& writer, const std::string& tableName, const RowSource& rows, std::size_t first,
                   std::size_t count, std::vector<std::size_t>& refused) {
    try {
        writer.inSavepoint([&] { writer.insert(tableName, RowSlice(rows, first, count), kelva::OnConflict::replace); });
    } catch (const kelva::DatabaseError& error) {
        if (error.kind() != kelva::FailureKind::constraint) throw;
        if (count == 1) return refused.push_back(first);
        insertHalving(writer, tableName, rows, first, count / 2, refused);
        insertHalving(writer, tableName, rows, first + count / 2, count - count / 2, refused);
    }
}

}  // namespace

KelvaDatabasePersistance::KelvaDatabasePersistance(StorageLocation storageLocation)
    : storageLocation_(std::move(storageLocation)) {}
KelvaDatabasePersistance::~KelvaDatabasePersistance() = default;

Result<bool, OpeningFailure> KelvaDatabasePersistance::registerDB(const std::optional<std::string>& passphrase) {
    // The queue comes first: works on it may ask this adapter, so nothing that they need is held while it is waited
    // for.
    auto queue = CommonConfigration::sharedInstance().dbQueue.get();
    if (!queue) queue = DispatchQueue::serial("tarvobase.database");
    auto open = [&] {
        platform::MutexLock opening(opening_);
        return openOn(queue, passphrase);
    };
    return queue->isCurrent() ? open() : queue->sync(open);
}

Result<bool, OpeningFailure> KelvaDatabasePersistance::openOn(const std::shared_ptr<DispatchQueue>& queue,
                                                              const std::optional<std::string>& passphrase) {
    if (opened()) {
        platform::log(platform::LogLevel::progress, "database",
                      "Already registered database at path: " + databaseName());
        return false;
    }
    // SQLite would take an empty name for a database of its own that is gone when it is closed.
    if (!storageLocation_.isInMemory() && storageLocation_.path().empty())
        return OpeningFailure{OpeningFailure::Kind::cannotOpen, "the database has no path"};
    try {
        kelva::Configuration configuration;
        if (passphrase) configuration.setKey(*passphrase);
        Library database;
        if (storageLocation_.isInMemory())
            database = std::make_shared<kelva::DatabaseQueue>(databaseName(), configuration, queue);
        else
            database = std::make_shared<kelva::DatabasePool>(databaseName(), configuration, queue);
        platform::MutexLock lock(mutex_);
        database_ = std::move(database);
    } catch (const kelva::DatabaseError& error) {
        return failureOf(error);
    } catch (const std::exception& error) {
        return OpeningFailure{OpeningFailure::Kind::other, error.what()};
    }
    platform::log(platform::LogLevel::progress, "database", "Registered database at path: " + databaseName());
    return true;
}

bool KelvaDatabasePersistance::deregisterDB() {
    if (RunningTransaction::find(*this)) {
        platform::reportProgrammingError("a database is closed inside a transaction of it");
        return false;
    }
    std::shared_ptr<kelva::KelvaDatabase> database;
    {
        platform::MutexLock lock(mutex_);
        database.swap(database_);
    }
    if (!database) {
        platform::log(platform::LogLevel::progress, "database",
                      "Already deregistered database at path: " + databaseName());
        return false;
    }
    try {
        database->close();
    } catch (const std::exception& error) {
        platform::log(platform::LogLevel::warning, "database",
                      std::string("error while closing the database: ") + error.what());
    }
    platform::log(platform::LogLevel::progress, "database", "Deregistered database at path: " + databaseName());
    return true;
}

std::shared_ptr<kelva::KelvaDatabase> KelvaDatabasePersistance::opened() const {
    if (auto running = RunningTransaction::find(*this)) return running->database();
    platform::MutexLock lock(mutex_);
    return database_;
}

KelvaDatabasePersistance::Outcome KelvaDatabasePersistance::withDatabase(
    std::string_view doing, platform::FunctionRef<void(const Library&)> work) const {
    auto database = opened();
    if (!database) {
        platform::log(platform::LogLevel::warning, "database",
                      "error: the database is not open: " + std::string(doing));
        return Outcome::failed;
    }
    auto logFailure = [&](const std::exception& error) {
        platform::log(platform::LogLevel::warning, "database", "error: " + std::string(doing) + ": " + error.what());
    };
    try {
        work(database);
        return Outcome::done;
    } catch (const kelva::DatabaseError& error) {
        logFailure(error);
        return isRejection(error.kind()) ? Outcome::rejected : Outcome::failed;
    } catch (const std::exception& error) {
        logFailure(error);
        return Outcome::failed;
    }
}

bool KelvaDatabasePersistance::write(std::string_view doing, platform::FunctionRef<void(kelva::Database&)> work) {
    auto outcome = withDatabase(doing, [&](const Library& database) {
        auto running = RunningTransaction::find(*this);
        if (!running) return database->write(work);
        // A failed write fails its transaction whole, so it needs no savepoint of its own, which would cost a copy of
        // each page. Only a tolerant transaction goes on after it.
        auto& writer = running->writer();
        running->isTolerant() ? writer.inSavepoint([&] { work(writer); }) : work(writer);
    });
    if (outcome != Outcome::done) noteFailedWrite(outcome);
    return outcome == Outcome::done;
}

bool KelvaDatabasePersistance::refuseWrite(const std::string& reason) {
    platform::log(platform::LogLevel::warning, "database", reason);
    noteFailedWrite(Outcome::rejected);
    return false;
}

void KelvaDatabasePersistance::noteFailedWrite(Outcome outcome) {
    if (auto running = RunningTransaction::find(*this)) running->fail(outcome == Outcome::rejected);
}

bool KelvaDatabasePersistance::transaction(std::string_view name, platform::FunctionRef<bool()> work) {
    return runTransaction(name, false, work);
}

bool KelvaDatabasePersistance::tolerantTransaction(std::string_view name, platform::FunctionRef<bool()> work) {
    return runTransaction(name, true, work);
}

/// The writes in a tolerant transaction are savepoints in any case, and a rejected one must not cost it whole.
bool KelvaDatabasePersistance::joinTransaction(std::string_view name, platform::FunctionRef<bool()> work) {
    auto running = RunningTransaction::find(*this);
    if (!running || running->isTolerant()) return transaction(name, work);
    if (!work()) running->fail(false);
    return !running->hasFailed();
}

bool KelvaDatabasePersistance::runTransaction(std::string_view name, bool isTolerant,
                                              platform::FunctionRef<bool()> work) {
    RunningTransaction::Frame frame;
    auto doing = "transaction " + std::string(name);
    bool isWanted = false, hasFailed = false;
    auto outcome = withDatabase(doing, [&](const Library& database) {
        database->inTransaction([&](kelva::Database& writer) {
            RunningTransaction running(*this, database, writer, isTolerant);
            isWanted = work();
            hasFailed = running.hasFailed();
            return isWanted && !hasFailed ? kelva::TransactionCompletion::commit
                                          : kelva::TransactionCompletion::rollback;
        });
    });
    bool isDone = outcome == Outcome::done;
    if (!isDone) noteFailedWrite(outcome);
    if (isDone && hasFailed)
        platform::log(platform::LogLevel::warning, "database",
                      "error: " + doing + ": it was undone, since a write in it failed");
    if (!isDone || !isWanted || hasFailed) return false;
    frame.keepWork();
    return true;
}

bool KelvaDatabasePersistance::createTable(const std::string& rawQuery) {
    // Making the tables of a module takes milliseconds. A statement that runs longer holds up every write.
    constexpr auto timeLimit = std::chrono::seconds(5);
    std::vector<std::string> refused;
    bool isDone =
        write("create table", [&](kelva::Database& writer) { refused = writer.executeUntrusted(rawQuery, timeLimit); });
    for (auto& kind : refused)
        platform::log(platform::LogLevel::warning, "database",
                      "error: create table: a statement was left out, since it wants more than tables: " + kind);
    return isDone;
}

bool KelvaDatabasePersistance::create(const std::string& table, const ColumnDefinitions& columnDefinitions,
                                      const std::vector<std::string>& primaryKey,
                                      const std::vector<std::vector<std::string>>& uniqueKeys) {
    return write("create " + table, [&](kelva::Database& writer) {
        writer.create(table, false, true, [&](kelva::TableDefinition& definition) {
            for (auto& [name, type] : columnDefinitions) definition.column(name, libraryType(type));
            if (!primaryKey.empty()) definition.primaryKey(primaryKey);
            for (auto& columns : uniqueKeys) definition.uniqueKey(columns);
        });
    });
}

bool KelvaDatabasePersistance::insertInto(const std::string& tableName, const ValueMap& values) {
    return write("insert into " + tableName,
                 [&](kelva::Database& writer) { writer.insert(tableName, values, kelva::OnConflict::replace); });
}

bool KelvaDatabasePersistance::insertInto(const std::string& tableName, const RowSource& rows) {
    return write("insert into " + tableName,
                 [&](kelva::Database& writer) { writer.insert(tableName, rows, kelva::OnConflict::replace); });
}

std::optional<std::vector<std::size_t>> KelvaDatabasePersistance::insertAccepted(const std::string& tableName,
                                                                                 const RowSource& rows) {
    std::vector<std::size_t> refused;
    bool isDone = write("insert into " + tableName, [&](kelva::Database& writer) {
        // A savepoint costs a journal of every page, so only a batch that was refused as a whole is worth one.
        try {
            writer.insert(tableName, rows, kelva::OnConflict::replace);
        } catch (const kelva::DatabaseError& error) {
            if (error.kind() != kelva::FailureKind::constraint) throw;
            insertHalving(writer, tableName, rows, 0, rows.rowCount(), refused);
        }
    });
    return isDone ? std::optional(std::move(refused)) : std::nullopt;
}

std::optional<std::vector<std::size_t>> KelvaDatabasePersistance::updateAccepted(const std::string& tableName,
                                                                                 const RowSource& rows,
                                                                                 std::span<const std::size_t> keys) {
    std::vector<std::size_t> refused;
    bool isDone =
        write("update " + tableName, [&](kelva::Database& writer) { refused = writer.update(tableName, rows, keys); });
    return isDone ? std::optional(std::move(refused)) : std::nullopt;
}

bool KelvaDatabasePersistance::update(const std::string& tableName, const ValueMap& values, const Criteria& criteria) {
    if (!kelva::allConvertible(boundValues(values)))
        return refuseWrite("Could not convert cast values to [String: DatabaseValueConvertible?");
    auto parameters = criteria.parameters();
    if (!kelva::allConvertible(parameters))
        return refuseWrite("Could not convert criteria values to [DatabaseValueConvertible?");
    return write("update " + tableName, [&](kelva::Database& writer) {
        writer.execute(kelva::UpdateQuery(tableName).set(values).filter(criteria.sql(), parameters));
    });
}

bool KelvaDatabasePersistance::update(const std::string& tableName, const std::vector<ValueMap>& values,
                                      const std::vector<Criteria>& criteria) {
    if (criteria.size() < values.size()) {
        platform::reportProgrammingError("update of " + tableName + " with fewer criteria than maps");
        noteFailedWrite();
        return false;
    }
    bool areStored = true;
    for (std::size_t i = 0; i < values.size(); ++i) areStored &= update(tableName, values[i], criteria[i]);
    return areStored;
}

std::optional<Rows> KelvaDatabasePersistance::fetchObjects(const std::string& rawQuery,
                                                           const std::optional<ValueList>& parameters) {
    auto& bound = orEmpty(parameters);
    if (!kelva::allConvertible(bound)) {
        platform::log(platform::LogLevel::warning, "database",
                      "Could not convert " + kindsOf(bound) + " to [DatabaseValueConvertible?");
        return std::nullopt;
    }
    std::optional<Rows> rows;
    withDatabase("fetch", [&](const Library& database) {
        database->read([&](kelva::Database& reader) { rows = reader.query(rawQuery, bound); });
    });
    return rows;
}

bool KelvaDatabasePersistance::dropTable(const std::string& tablename) {
    return write("drop " + tablename, [&](kelva::Database& writer) { writer.drop(tablename, true); });
}

bool KelvaDatabasePersistance::attachDatabase(const std::string& fromPath, const std::string& withName) {
    bool isDone = Outcome::done == withDatabase("attach", [&](const Library& database) {
                      database->attachDatabase(fromPath, withName);
                  });
    if (isDone)
        platform::log(platform::LogLevel::progress, "database",
                      "Attached database `" + fromPath + "` with name `" + withName + "`");
    else
        noteFailedWrite();
    return isDone;
}

bool KelvaDatabasePersistance::detachDatabase(const std::string& named) {
    bool isDone =
        Outcome::done == withDatabase("detach", [&](const Library& database) { database->detachDatabase(named); });
    if (isDone)
        platform::log(platform::LogLevel::progress, "database", "Detached database having name `" + named + "`");
    else
        noteFailedWrite();
    return isDone;
}

bool KelvaDatabasePersistance::execute(const std::vector<Statement>& queries) {
    for (auto& query : queries)
        if (!kelva::allConvertible(orEmpty(query.parameters)))
            return refuseWrite("could not convert `" + kindsOf(*query.parameters) + " to [DatabaseValueConvertible]`");
    return write("execute", [&](kelva::Database& writer) {
        for (auto& query : queries) writer.execute(query.rawQuery, orEmpty(query.parameters));
    });
}

std::vector<std::string> KelvaDatabasePersistance::columnNames(const std::string& tableName) {
    std::vector<std::string> names;
    withDatabase("columns of " + tableName, [&](const Library& database) {
        database->read([&](kelva::Database& reader) { names = reader.columnNames(tableName); });
    });
    return names;
}

void KelvaDatabasePersistance::add(std::shared_ptr<kelva::TransactionObserver> transactionObserver) {
    withDatabase("add observer", [&](const Library& database) { database->add(std::move(transactionObserver)); });
}
void KelvaDatabasePersistance::remove(const std::shared_ptr<kelva::TransactionObserver>& transactionObserver) {
    withDatabase("remove observer", [&](const Library& database) { database->remove(transactionObserver); });
}
void KelvaDatabasePersistance::add(std::shared_ptr<kelva::SimpleObserver> simpleObserver) {
    withDatabase("add observer", [&](const Library& database) { database->add(std::move(simpleObserver)); });
}
void KelvaDatabasePersistance::remove(const std::shared_ptr<kelva::SimpleObserver>& simpleObserver) {
    withDatabase("remove observer", [&](const Library& database) { database->remove(simpleObserver); });
}
void KelvaDatabasePersistance::removeAllObserver() {
    withDatabase("remove observers", [&](const Library& database) { database->removeAllObserver(); });
}

}  // namespace tarvo
