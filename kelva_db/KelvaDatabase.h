#pragma once

#include <memory>
#include <optional>
#include <string>

#include "kelva_db/Database.h"
#include "kelva_db/Observers.h"
#include "platform/DispatchQueue.h"
#include "platform/Secret.h"

namespace kelva {

enum class TransactionCompletion { commit, rollback };

/// How a database is opened.
class Configuration {
public:
    /// The passphrase. Throws `DatabaseError` for an empty one: a file without a key is opened by not setting any. An
    /// open database keeps it until it is closed, since each file that is attached has a key of its own made from it.
    void setKey(std::string passphrase);
    /// The 32 bytes that the passphrase would be turned into, and the file's 16 bytes of salt. Spares the derivation;
    /// for tests that open many files. Throws for other lengths.
    void setRawKey(std::string key, std::string salt);

    /// Connections that read at the same time; at least 1. A `DatabaseQueue` has none.
    int readers = 4;
    /// Milliseconds to wait for a lock of another process before the failure `busy`. Writes after one that waited in
    /// vain wait for 500 ms at most, until one succeeds.
    int busyTimeout = 5000;

    const std::optional<tarvo::platform::Secret>& key() const { return key_; }
    const std::optional<std::pair<std::string, std::string>>& rawKey() const { return rawKey_; }

private:
    std::optional<tarvo::platform::Secret> key_;
    std::optional<std::pair<std::string, std::string>> rawKey_;
};

/// A database that is open. Writes run one after the other on the writer's queue; all operations block the caller,
/// throw `DatabaseError`, and pass on what their block throws. A write inside a write is a savepoint, a read inside
/// a write reads through the writer, and a write begun inside a read is refused.
class KelvaDatabase : public virtual tarvo::platform::Object {
public:
    using Block = tarvo::platform::FunctionRef<void(Database&)>;
    using TransactionBlock = tarvo::platform::FunctionRef<TransactionCompletion(Database&)>;

    /// A read sees every write that was committed before it began.
    virtual void read(Block block) = 0;
    /// Runs the block in a transaction of its own; a throw undoes it.
    virtual void write(Block block) = 0;
    virtual void inTransaction(TransactionBlock block) = 0;

    /// Ends all connections after the blocks under way, and waits for no other process. May be called twice; every
    /// later operation throws `misuse`.
    virtual void close() = 0;

    /// The file must have the same key as this database, or no key if this one has none. The shared memory database is
    /// attached by its name, whatever the key.
    virtual void attachDatabase(const std::string& fromPath, const std::string& withName) = 0;
    virtual void detachDatabase(const std::string& named) = 0;

    virtual void add(std::shared_ptr<TransactionObserver> observer) = 0;
    virtual void remove(const std::shared_ptr<TransactionObserver>& observer) = 0;
    virtual void add(std::shared_ptr<SimpleObserver> observer) = 0;
    virtual void remove(const std::shared_ptr<SimpleObserver>& observer) = 0;
    virtual void removeAllObserver() = 0;

    /// The result of a block, for blocks that have one.
    template <class F>
    auto reading(F&& block) {
        std::optional<std::invoke_result_t<F, Database&>> result;
        read([&](Database& database) { result.emplace(block(database)); });
        return std::move(*result);
    }
};

/// A file with one writer on the given serial queue and several readers that run in parallel with it (WAL). Without a
/// queue it makes one of its own. The constructor opens the writer, so that a wrong key, a damaged file or a missing
/// encryption shows here and leaves the file as it was; readers open when they are first needed.
class DatabasePool final : public KelvaDatabase {
public:
    DatabasePool(const std::string& path, const Configuration& configuration,
                 std::shared_ptr<tarvo::DispatchQueue> writeQueue = nullptr);
    ~DatabasePool() override;

    void read(Block block) override;
    void write(Block block) override;
    void inTransaction(TransactionBlock block) override;
    void close() override;
    void attachDatabase(const std::string& fromPath, const std::string& withName) override;
    void detachDatabase(const std::string& named) override;
    void add(std::shared_ptr<TransactionObserver> observer) override;
    void remove(const std::shared_ptr<TransactionObserver>& observer) override;
    void add(std::shared_ptr<SimpleObserver> observer) override;
    void remove(const std::shared_ptr<SimpleObserver>& observer) override;
    void removeAllObserver() override;

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// One connection for everything, on the given serial queue: the memory database "file::memory:?cache=shared", or a
/// file that needs no parallel readers.
class DatabaseQueue final : public KelvaDatabase {
public:
    DatabaseQueue(const std::string& path, const Configuration& configuration,
                  std::shared_ptr<tarvo::DispatchQueue> queue = nullptr);
    ~DatabaseQueue() override;

    void read(Block block) override;
    void write(Block block) override;
    void inTransaction(TransactionBlock block) override;
    void close() override;
    void attachDatabase(const std::string& fromPath, const std::string& withName) override;
    void detachDatabase(const std::string& named) override;
    void add(std::shared_ptr<TransactionObserver> observer) override;
    void remove(const std::shared_ptr<TransactionObserver>& observer) override;
    void add(std::shared_ptr<SimpleObserver> observer) override;
    void remove(const std::shared_ptr<SimpleObserver>& observer) override;
    void removeAllObserver() override;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace kelva
