#pragma once

#include <cstddef>
#include <memory>

namespace kelva {
class Database;
class KelvaDatabase;
}  // namespace kelva

namespace tarvo {

class DatabaseAdapter;

/// A transaction of an adapter that the calling thread is in, for as long as this lives. What the thread does with the
/// adapter meanwhile finds it here, and belongs to it.
class RunningTransaction {
public:
    RunningTransaction(const DatabaseAdapter& adapter, std::shared_ptr<kelva::KelvaDatabase> database,
                       kelva::Database& writer, bool isTolerant = false);
    ~RunningTransaction();
    RunningTransaction(const RunningTransaction&) = delete;

    /// Returns the innermost transaction of an adapter on this thread, or null.
    static RunningTransaction* find(const DatabaseAdapter& adapter);

    /// Stands around a transaction and outlives its commit. The end of the outermost one runs what `afterTransaction`
    /// and `afterCommit` were given.
    class Frame {
    public:
        Frame();
        ~Frame();
        Frame(const Frame&) = delete;
        /// The transaction is committed, or held by the one around it. Without this call the end of the frame forgets
        /// what `afterCommit` was given inside it.
        void keepWork() { isWorkKept_ = true; }

    private:
        const std::size_t begin_;  // of its work
        bool isWorkKept_ = false;
    };

    /// A write failed: neither this transaction nor one around it may be committed. A write that SQLite rejected fails
    /// only the transactions inside a tolerant one.
    void fail(bool isRejected);
    bool isTolerant() const { return isTolerant_; }
    bool hasFailed() const { return failed_; }

    kelva::Database& writer() const { return writer_; }
    /// The database that the transaction runs in, also when the adapter has been closed meanwhile.
    const std::shared_ptr<kelva::KelvaDatabase>& database() const { return database_; }

private:
    const DatabaseAdapter& adapter_;
    const std::shared_ptr<kelva::KelvaDatabase> database_;
    kelva::Database& writer_;
    RunningTransaction* const outer_;
    const bool isTolerant_;
    bool failed_ = false;
};

}  // namespace tarvo
