#include "kelva_db/KelvaDatabase.h"

#include "kelva_db/internal/DatabaseFile.h"
#include "kelva_db/internal/ReaderPool.h"
#include "kelva_db/internal/Sqlite.h"
#include "kelva_db/internal/Writer.h"

namespace kelva {

void Configuration::setKey(std::string passphrase) {
    if (passphrase.empty()) throwError(FailureKind::misuse, "the passphrase is empty");
    key_.emplace(std::move(passphrase));
}

void Configuration::setRawKey(std::string key, std::string salt) {
    if (key.size() != 32 || salt.size() != 16)
        throwError(FailureKind::misuse, "a raw key has 32 bytes and its salt 16");
    rawKey_.emplace(std::move(key), std::move(salt));
}

struct DatabasePool::State {
    State(const std::string& path, const Configuration& configuration, std::shared_ptr<tarvo::DispatchQueue> queue)
        : writer(path, configuration, std::move(queue), Connection::Role::writer), readers(writer) {}

    Writer writer;
    ReaderPool readers;
};

DatabasePool::DatabasePool(const std::string& path, const Configuration& configuration,
                           std::shared_ptr<tarvo::DispatchQueue> writeQueue)
    : state_(std::make_unique<State>(path, configuration, std::move(writeQueue))) {}

DatabasePool::~DatabasePool() {
    try {
        close();
    } catch (const DatabaseError&) {
        // Nothing can be done about it here; SQLite finds the log at the next opening.
    }
}

void DatabasePool::read(Block block) {
    if (auto access = Access::find(&state_->writer)) return access->read(block);
    state_->readers.read(block);
}

void DatabasePool::write(Block block) { state_->writer.write(block); }
void DatabasePool::inTransaction(TransactionBlock block) { state_->writer.transaction(block); }

void DatabasePool::close() {
    requireOutside(&state_->writer, "the database is closed");
    // The last connection to end copies the log into the file, and that has to be the writer.
    state_->readers.close();
    state_->writer.close();
}

void DatabasePool::attachDatabase(const std::string& fromPath, const std::string& withName) {
    state_->readers.attach(state_->writer.attach(fromPath, withName));
}

void DatabasePool::detachDatabase(const std::string& named) {
    state_->writer.detach(named);
    state_->readers.detach(named);
}

void DatabasePool::add(std::shared_ptr<TransactionObserver> observer) {
    state_->writer.tracker().add(std::move(observer));
}
void DatabasePool::remove(const std::shared_ptr<TransactionObserver>& observer) {
    state_->writer.tracker().remove(observer.get());
}
void DatabasePool::add(std::shared_ptr<SimpleObserver> observer) { state_->writer.tracker().add(std::move(observer)); }
void DatabasePool::remove(const std::shared_ptr<SimpleObserver>& observer) {
    state_->writer.tracker().remove(observer.get());
}
void DatabasePool::removeAllObserver() { state_->writer.tracker().removeAll(); }

struct DatabaseQueue::State {
    State(const std::string& path, const Configuration& configuration, std::shared_ptr<tarvo::DispatchQueue> queue)
        : writer(path, configuration, std::move(queue),
                 isMemoryDatabase(path) ? Connection::Role::memory : Connection::Role::writer) {}

    Writer writer;
};

DatabaseQueue::DatabaseQueue(const std::string& path, const Configuration& configuration,
                             std::shared_ptr<tarvo::DispatchQueue> queue)
    : state_(std::make_unique<State>(path, configuration, std::move(queue))) {}

DatabaseQueue::~DatabaseQueue() {
    try {
        close();
    } catch (const DatabaseError&) {
        // As above.
    }
}

void DatabaseQueue::read(Block block) { state_->writer.read(block); }
void DatabaseQueue::write(Block block) { state_->writer.write(block); }
void DatabaseQueue::inTransaction(TransactionBlock block) { state_->writer.transaction(block); }
void DatabaseQueue::close() { state_->writer.close(); }

void DatabaseQueue::attachDatabase(const std::string& fromPath, const std::string& withName) {
    state_->writer.attach(fromPath, withName);
}
void DatabaseQueue::detachDatabase(const std::string& named) { state_->writer.detach(named); }

void DatabaseQueue::add(std::shared_ptr<TransactionObserver> observer) {
    state_->writer.tracker().add(std::move(observer));
}
void DatabaseQueue::remove(const std::shared_ptr<TransactionObserver>& observer) {
    state_->writer.tracker().remove(observer.get());
}
void DatabaseQueue::add(std::shared_ptr<SimpleObserver> observer) { state_->writer.tracker().add(std::move(observer)); }
void DatabaseQueue::remove(const std::shared_ptr<SimpleObserver>& observer) {
    state_->writer.tracker().remove(observer.get());
}
void DatabaseQueue::removeAllObserver() { state_->writer.tracker().removeAll(); }

}  // namespace kelva
