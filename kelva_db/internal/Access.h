#pragma once

#include "kelva_db/internal/Connection.h"

namespace kelva {

/// Says, as long as it lives, that the calling thread is inside a block of a database. Blocks that begin inside it find
/// it and use its connection.
class Access {
public:
    /// `observing` is the time after a transaction, when its observers are notified: new blocks may begin then, but the
    /// connection must not go away.
    enum class Kind { reading, writing, observing };

    Access(const void* owner, Connection& connection, Kind kind);
    ~Access();
    Access(const Access&) = delete;

    /// The innermost block of a database that this thread is in, or null.
    static Access* find(const void* owner);
    /// Whether this thread is in a block of the database or in a call of its observers.
    static bool isInside(const void* owner);

    Connection& connection() const { return connection_; }
    Kind kind() const { return kind_; }

    /// Runs a read inside this block.
    void read(KelvaDatabase::Block block) const;
    /// Runs a transaction inside this block, as a savepoint. Throws `misuse` inside a read.
    void transaction(KelvaDatabase::TransactionBlock block) const;

private:
    const void* owner_;
    Connection& connection_;
    Kind kind_;
    Access* outer_;
};

/// Throws `misuse` when the calling thread is inside a block of the database or a call of its observers.
void requireOutside(const void* owner, const char* what);

}  // namespace kelva
