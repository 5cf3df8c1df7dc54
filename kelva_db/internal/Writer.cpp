#include "kelva_db/internal/Writer.h"

#include <algorithm>

#include "kelva_db/internal/DatabaseFile.h"
#include "kelva_db/internal/Sqlite.h"
#include "platform/Files.h"

namespace kelva {

Writer::Writer(std::string path, const Configuration& configuration, std::shared_ptr<tarvo::DispatchQueue> queue,
               Connection::Role role)
    : path_(std::move(path)),
      configuration_(configuration),
      queue_(queue ? std::move(queue) : tarvo::DispatchQueue::serial("kelva_db.writer")) {
    onQueue([&] { open(role); });
}

Writer::~Writer() = default;

/// Of two that find no file at the same time, one makes it, and the other fails with its own salt. SQLite's locks see
/// to it that the file is of one piece.
void Writer::open(Connection::Role role) {
    constexpr int attempts = 3;
    for (int attempt = 1;; ++attempt) {
        try {
            return openOnce(role);
        } catch (const DatabaseError& error) {
            bool wasMadeMeanwhile = format_.isNew && error.kind() == FailureKind::wrongKey;
            if (!wasMadeMeanwhile || attempt == attempts) throw;
        }
    }
}

void Writer::openOnce(Connection::Role role) {
    turn_.assumeHeld();
    if (role != Connection::Role::memory) format_ = FileFormat::find(path_, configuration_);
    if (role != Connection::Role::memory) keepToOwner(path_);
    try {
        connection_ = std::make_unique<Connection>(path_, format_, role, configuration_.busyTimeout, &tracker_);
        proveEncryption(role);
    } catch (const DatabaseError& error) {
        connection_.reset();
        // A plain file of our own making must not stay behind; one that was there before is never removed.
        if (format_.isNew && error.kind() == FailureKind::notEncrypted)
            for (auto suffix : {"", "-wal", "-shm", "-journal"}) tarvo::files::remove(path_ + suffix);
        throw;
    }
}

/// A key is accepted without a word by an SQLite that cannot encrypt.
void Writer::proveEncryption(Connection::Role role) {
    turn_.assumeHeld();
    if (role == Connection::Role::memory || format_.key.empty()) return;
    bool answers = !singleText(connection_->handle(), "PRAGMA cipher_version", Stage::open).empty();
    if (answers && !isPlainHead(beginningOf(path_).head)) return;
    throwError(FailureKind::notEncrypted, "the file would not be encrypted although a key was given");
}

namespace {

/// Holds the writer's turn.
class TARVO_THREAD_ANNOTATION(scoped_lockable) Turn {
public:
    explicit Turn(tarvo::platform::Mutex& mutex) TARVO_ACQUIRE(mutex) : mutex_(mutex) {
        if (mutex.tryLock()) return;
        tarvo::platform::BlockingScope waiting;
        mutex.lock();
    }
    ~Turn() TARVO_RELEASE() { mutex_.unlock(); }
    Turn(const Turn&) = delete;

private:
    tarvo::platform::Mutex& mutex_;
};

}  // namespace

/// A caller that is inside a block, or in a call of an observer, has the turn already. One that holds the queue for
/// something else goes on in the queue's turn.
void Writer::onQueue(tarvo::platform::FunctionRef<void()> work) {
    if (Access::isInside(this)) return work();
    auto inTurn = [&] {
        Turn turn(turn_);
        work();
    };
    if (queue_->isCurrent()) return inTurn();
    queue_->sync(inTurn);
}

/// Works call this, and works run in their turn.
Connection& Writer::connection() {
    turn_.assumeHeld();
    if (!connection_) throwError(FailureKind::misuse, "the database is closed");
    return *connection_;
}

/// Returns whether the transaction was committed. A throw of the block is passed on after the rollback.
bool Writer::runTransaction(Connection& connection, KelvaDatabase::TransactionBlock block) {
    Access access(this, connection, Access::Kind::writing);
    Connection::Writability writable(connection, true);
    try {
        if (block(connection.database()) == TransactionCompletion::commit) {
            connection.commit();
            return true;
        }
    } catch (...) {
        connection.rollback();
        throw;
    }
    connection.rollback();
    return false;
}

/// A process that holds the lock for long would make each of many writes wait its whole time. Those after the first one
/// that waited in vain wait for a moment only, until one succeeds.
void Writer::begin(Connection& writer) {
    constexpr int moment = 500;
    turn_.assumeHeld();
    auto setPatience = [&](bool isLockedOut) {
        turn_.assumeHeld();
        isLockedOut_ = isLockedOut;
        auto wait = configuration_.busyTimeout;
        writer.setBusyTimeout(isLockedOut ? std::min(wait, moment) : wait);
    };
    try {
        writer.begin(true);
        if (isLockedOut_) setPatience(false);
    } catch (const DatabaseError& error) {
        if (error.kind() == FailureKind::busy) setPatience(true);
        throw;
    }
}

void Writer::transaction(KelvaDatabase::TransactionBlock block) {
    if (auto access = Access::find(this)) return access->transaction(block);
    onQueue([&] {
        auto& writer = connection();
        begin(writer);
        bool committed = false;
        try {
            committed = runTransaction(writer, block);
        } catch (...) {
            notify(writer, false);
            throw;
        }
        notify(writer, committed);
        writer.checkpointWhenLarge();
    });
}

/// The transaction is over and its block left, so observers may begin blocks of their own.
void Writer::notify(Connection& writer, bool committed) {
    Access observing(this, writer, Access::Kind::observing);
    Connection::Writability readOnly(writer, false);
    committed ? tracker_.notifyCommit(writer.database()) : tracker_.notifyRollback(writer.database());
}

void Writer::write(KelvaDatabase::Block block) {
    transaction([&](Database& database) {
        block(database);
        return TransactionCompletion::commit;
    });
}

void Writer::read(KelvaDatabase::Block block) {
    if (auto access = Access::find(this)) return access->read(block);
    onQueue([&] {
        auto& reader = connection();
        Access access(this, reader, Access::Kind::reading);
        Connection::Writability readOnly(reader, false);
        block(reader.database());
    });
}

Attachment Writer::attach(const std::string& path, const std::string& name) {
    requireOutside(this, "a file is attached");
    Attachment attachment{path, name, FileFormat::find(path, configuration_)};
    onQueue([&] { connection().attach(attachment); });
    return attachment;
}

void Writer::detach(const std::string& name) {
    requireOutside(this, "a file is detached");
    onQueue([&] { connection().detach(name); });
}

void Writer::close() {
    requireOutside(this, "the database is closed");
    onQueue([&] {
        turn_.assumeHeld();
        if (!connection_) return;
        connection_->checkpoint();
        connection_.reset();
        tracker_.removeAll();
    });
}

}  // namespace kelva
