#pragma once

#include <memory>
#include <vector>

#include "kelva_db/internal/Access.h"
#include "kelva_db/internal/ChangeTracker.h"
#include "kelva_db/internal/Connection.h"
#include "platform/DispatchQueue.h"
#include "platform/ThreadSafety.h"

namespace kelva {

/// The one connection of a database that writes, with the observers of what it writes. Works come one after the other
/// in the order of the queue; on a concurrent queue they still come one after the other.
class Writer {
public:
    Writer(std::string path, const Configuration& configuration, std::shared_ptr<tarvo::DispatchQueue> queue,
           Connection::Role role);
    ~Writer();

    const std::string& path() const { return path_; }
    const FileFormat& format() const { return format_; }
    const Configuration& configuration() const { return configuration_; }
    ChangeTracker& tracker() { return tracker_; }

    /// Runs a block in a transaction of its own, or in a savepoint when the calling thread is inside a block already.
    void transaction(KelvaDatabase::TransactionBlock block);
    void write(KelvaDatabase::Block block);
    /// Reads on this connection, for a database that has no other.
    void read(KelvaDatabase::Block block);

    Attachment attach(const std::string& path, const std::string& name);
    void detach(const std::string& name);

    /// Copies the log into the file and ends the connection. The second call does nothing.
    void close();

private:
    void onQueue(tarvo::platform::FunctionRef<void()> work) TARVO_EXCLUDES(turn_);
    Connection& connection();
    bool runTransaction(Connection& connection, KelvaDatabase::TransactionBlock block);
    void notify(Connection& writer, bool committed);
    void open(Connection::Role role);
    void openOnce(Connection::Role role);
    void begin(Connection& writer);
    void proveEncryption(Connection::Role role);

    std::string path_;
    Configuration configuration_;
    std::shared_ptr<tarvo::DispatchQueue> queue_;
    FileFormat format_;
    ChangeTracker tracker_;
    // Held by the one work that runs. A serial queue never makes it wait; a concurrent one does.
    tarvo::platform::Mutex turn_;
    std::unique_ptr<Connection> connection_ TARVO_GUARDED_BY(turn_);
    bool isLockedOut_ TARVO_GUARDED_BY(turn_) = false;  // the last write waited in vain for another process
};

}  // namespace kelva
