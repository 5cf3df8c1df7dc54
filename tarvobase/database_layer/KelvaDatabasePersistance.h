#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/FunctionRef.h"
#include "platform/Result.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"

namespace tarvo::platform {
class DispatchQueue;
}  // namespace tarvo::platform

namespace kelva {
class Database;
class KelvaDatabase;
}  // namespace kelva

namespace tarvo {

/// The place where a database is kept.
class StorageLocation {
public:
    static StorageLocation onDisk(std::string path) { return StorageLocation(std::move(path)); }
    static StorageLocation inMemory() { return StorageLocation(std::nullopt); }
    bool isInMemory() const { return !path_; }
    /// Returns the path, or SQLite's name of the shared memory database.
    std::string path() const { return path_.value_or("file::memory:?cache=shared"); }

private:
    explicit StorageLocation(std::optional<std::string> path) : path_(std::move(path)) {}
    std::optional<std::string> path_;
};

/// The adapter over the database library. A file gets one writer and parallel readers, the memory database one
/// connection; writes run on `CommonConfigration.dbQueue`, or on a queue of the database's own when that is absent.
///
/// Every operation needs an open database. Without one, reads return nullopt, and writes log a line and return false.
class KelvaDatabasePersistance final : public DatabaseAdapter, public DatabaseTransactionAdapter {
public:
    explicit KelvaDatabasePersistance(StorageLocation storageLocation);
    ~KelvaDatabasePersistance() override;

    /// Why a database was not opened. The message may be shown; it holds no secret.
    struct OpeningFailure {
        enum class Kind { wrongPassphrase, notEncrypted, damaged, cannotOpen, other } kind;
        std::string message;
    };
    /// Opens the database; returns false if it is open already. An absent passphrase opens it without a key. The
    /// passphrase is neither kept nor logged. A failure (wrong passphrase, damaged file, no encryption in this process)
    /// leaves the database closed and the file unchanged.
    Result<bool, OpeningFailure> registerDB(const std::optional<std::string>& passphrase);
    /// Closes the database after the transactions under way; those that wait for their turn fail. Returns false if it
    /// was not open, or if the caller is inside a transaction of it, which is a programming error.
    bool deregisterDB();

    std::string databaseName() const override { return storageLocation_.path(); }
    using DatabaseAdapter::create;
    using DatabaseAdapter::execute;
    using DatabaseAdapter::fetchObjects;
    using DatabaseAdapter::insertInto;
    using DatabaseAdapter::update;
    bool transaction(std::string_view name, platform::FunctionRef<bool()> work) override;
    bool joinTransaction(std::string_view name, platform::FunctionRef<bool()> work) override;
    bool tolerantTransaction(std::string_view name, platform::FunctionRef<bool()> work) override;
    bool createTable(const std::string& rawQuery) override;
    bool create(const std::string& table, const ColumnDefinitions& columnDefinitions,
                const std::vector<std::string>& primaryKey,
                const std::vector<std::vector<std::string>>& uniqueKeys) override;
    bool insertInto(const std::string& tableName, const ValueMap& values) override;
    bool insertInto(const std::string& tableName, const RowSource& rows) override;
    std::optional<std::vector<std::size_t>> insertAccepted(const std::string& tableName,
                                                           const RowSource& rows) override;
    std::optional<std::vector<std::size_t>> updateAccepted(const std::string& tableName, const RowSource& rows,
                                                           std::span<const std::size_t> keys) override;
    bool update(const std::string& tableName, const ValueMap& values, const Criteria& criteria) override;
    bool update(const std::string& tableName, const std::vector<ValueMap>& values,
                const std::vector<Criteria>& criteria) override;
    std::optional<Rows> fetchObjects(const std::string& rawQuery, const std::optional<ValueList>& parameters) override;
    bool dropTable(const std::string& tablename) override;
    bool attachDatabase(const std::string& fromPath, const std::string& withName) override;
    bool detachDatabase(const std::string& named) override;
    bool execute(const std::vector<Statement>& queries) override;
    std::vector<std::string> columnNames(const std::string& tableName) override;

    void add(std::shared_ptr<kelva::TransactionObserver> transactionObserver) override;
    void remove(const std::shared_ptr<kelva::TransactionObserver>& transactionObserver) override;
    void add(std::shared_ptr<kelva::SimpleObserver> simpleObserver) override;
    void remove(const std::shared_ptr<kelva::SimpleObserver>& simpleObserver) override;
    void removeAllObserver() override;

private:
    using Library = std::shared_ptr<kelva::KelvaDatabase>;
    Result<bool, OpeningFailure> openOn(const std::shared_ptr<platform::DispatchQueue>& queue,
                                        const std::optional<std::string>& passphrase);
    /// The open database, or null. Inside a transaction it is that of the transaction.
    Library opened() const;
    /// Runs the work with the open database. Every failure ends here, logged with what was being done; returns which.
    enum class Outcome { done, rejected, failed };
    Outcome withDatabase(std::string_view doing, platform::FunctionRef<void(const Library&)> work) const;
    /// Runs the work as a part of the transaction of this thread, or as a transaction of its own.
    bool write(std::string_view doing, platform::FunctionRef<void(kelva::Database&)> work);
    /// Logs why a write was not begun, and fails the transaction of this thread.
    bool refuseWrite(const std::string& reason);
    void noteFailedWrite(Outcome outcome = Outcome::failed);
    bool runTransaction(std::string_view name, bool isTolerant, platform::FunctionRef<bool()> work);

    const StorageLocation storageLocation_;
    platform::Mutex opening_;  // held, on the queue, by the one who opens
    mutable platform::Mutex mutex_;
    Library database_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo
