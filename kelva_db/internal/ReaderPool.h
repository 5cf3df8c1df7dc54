#pragma once

#include <memory>
#include <vector>

#include "kelva_db/internal/Connection.h"
#include "platform/ThreadSafety.h"

namespace kelva {

class Writer;

/// The connections that read beside the writer. They open when they are first needed, with the key that the writer
/// has derived. Any thread.
class ReaderPool {
public:
    explicit ReaderPool(const Writer& writer);

    /// Runs a block on a free connection, all of it on one state of the database. Waits while all are in use.
    void read(KelvaDatabase::Block block);

    void attach(Attachment attachment);
    void detach(const std::string& name);

    /// Waits for the blocks under way and ends all connections; every later read throws `misuse`.
    void close();

private:
    class Loan;
    using Readers = std::vector<std::unique_ptr<Connection>>;
    std::unique_ptr<Connection> take(std::uint64_t& generation);
    /// Returns null if one more connection does not open and others are there to wait for.
    std::unique_ptr<Connection> tryTake(std::uint64_t& generation);
    /// Lowers the number of connections to those that are open; returns false if there are none.
    bool doWithoutOneMore();
    void giveBack(std::unique_ptr<Connection> reader, std::uint64_t generation);
    std::unique_ptr<Connection> open(const std::vector<Attachment>& attachments) const;
    /// The idle connections, after a change that they do not know of. Those in use end when they come back.
    Readers outdated() TARVO_REQUIRES(mutex_);

    const Writer& writer_;
    tarvo::platform::Mutex mutex_;
    tarvo::platform::Condition changed_;
    Readers idle_ TARVO_GUARDED_BY(mutex_);
    int most_ TARVO_GUARDED_BY(mutex_);                      // connections at the same time
    int count_ TARVO_GUARDED_BY(mutex_) = 0;                 // open or about to open
    std::uint64_t generation_ TARVO_GUARDED_BY(mutex_) = 0;  // counts the changes of the attachments
    std::vector<Attachment> attachments_ TARVO_GUARDED_BY(mutex_);
    bool closed_ TARVO_GUARDED_BY(mutex_) = false;
};

}  // namespace kelva
