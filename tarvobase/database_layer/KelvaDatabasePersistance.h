#pragma once

#include <memory>
#include <shared_mutex>
#include <string>
#include <string_view>

#include "platform/Result.h"

#include "tarvobase/database_layer/DatabaseAdapter.h"

namespace kelva {
class Database;
class KelvaDatabase;
}  // namespace kelva

namespace tarvo {

/// Where a database is kept.
class StorageLocation {
public:
    static StorageLocation onDisk(std::string path) { return StorageLocation(std::move(path)); }
    static StorageLocation inMemory() { return StorageLocation(std::nullopt); }
    bool isInMemory() const { return !path_; }
    /// The path, or SQLite's name of the shared memory database.
    std::string path() const { return path_.value_or("file::memory:?cache=shared"); }

private:
    explicit StorageLocation(std::optional<std::string> path) : path_(std::move(path)) {}
    std::optional<std::string> path_;
};

/// The adapter over the database library. A file gets one writer and parallel readers, the memory database one
/// connection; writes run on `CommonConfigration.dbQueue`, or on a queue of the database's own when that is absent.
///
/// Every operation needs an open database. Without one, reads are absent and writes do nothing but a log line.
class KelvaDatabasePersistance final : public DatabaseAdapter, public DatabaseTransactionAdapter {
public:
    explicit KelvaDatabasePersistance(StorageLocation storageLocation);
    ~KelvaDatabasePersistance() override;

    /// Opens the database; false when it is open already. An absent passphrase opens it without a key. The passphrase
    /// is neither kept nor logged. A failure (wrong passphrase, damaged file, no encryption in this process) leaves it
    /// closed and comes back in the result; nothing of the file is changed.
    struct OpeningFailure {
        enum class Kind { wrongPassphrase, notEncrypted, damaged, cannotOpen, other } kind;
        std::string message;
    };
    Result<bool, OpeningFailure> registerDB(const std::optional<std::string>& passphrase);
    /// Closes the database; false when it was not open.
    bool deregisterDB();

    std::string databaseName() const override { return storageLocation_.path(); }
    using DatabaseAdapter::create;
    using DatabaseAdapter::execute;
    using DatabaseAdapter::fetchObjects;
    using DatabaseAdapter::insertInto;
    using DatabaseAdapter::update;
    void createTable(const std::string& rawQuery) override;
    void create(const std::string& table, const ColumnDefinitions& columnDefinitions,
                const std::vector<std::string>& primaryKey,
                const std::vector<std::vector<std::string>>& uniqueKeys) override;
    void insertInto(const std::string& tableName, const ValueMap& values) override;
    void insertInto(const std::string& tableName, const RowSource& rows) override;
    std::optional<std::vector<std::size_t>> insertAccepted(const std::string& tableName,
                                                           const RowSource& rows) override;
    void update(const std::string& tableName, const ValueMap& values, const Criteria& criteria) override;
    void update(const std::string& tableName, const std::vector<ValueMap>& values,
                const std::vector<Criteria>& criteria) override;
    std::optional<Rows> fetchObjects(const std::string& rawQuery, const std::optional<ValueList>& parameters) override;
    void dropTable(const std::string& tablename) override;
    void attachDatabase(const std::string& fromPath, const std::string& withName) override;
    void detachDatabase(const std::string& named) override;
    void execute(const std::vector<Statement>& queries) override;
    std::vector<std::string> columnNames(const std::string& tableName) override;

    void add(std::shared_ptr<kelva::TransactionObserver> transactionObserver) override;
    void remove(const std::shared_ptr<kelva::TransactionObserver>& transactionObserver) override;
    void add(std::shared_ptr<kelva::SimpleObserver> simpleObserver) override;
    void remove(const std::shared_ptr<kelva::SimpleObserver>& simpleObserver) override;
    void removeAllObserver() override;

private:
    std::shared_ptr<kelva::KelvaDatabase> opened() const;
    /// Runs the work with the open database; every failure ends here, logged with what was being done.
    template <class Work>
    bool withDatabase(std::string_view doing, Work&& work) const;

    const StorageLocation storageLocation_;
    mutable std::shared_mutex mutex_;
    std::shared_ptr<kelva::KelvaDatabase> database_;
};

}  // namespace tarvo
