#include "kelva_db/internal/ReaderPool.h"

#include <algorithm>
#include <utility>

#include "kelva_db/internal/Sqlite.h"
#include "kelva_db/internal/Writer.h"
#include "platform/DispatchQueue.h"

namespace kelva {

class ReaderPool::Loan {
public:
    explicit Loan(ReaderPool& pool) : pool_(pool), reader_(pool.take(generation_)) {}
    ~Loan() { pool_.giveBack(std::move(reader_), generation_); }
    Loan(const Loan&) = delete;
    Connection& reader() const { return *reader_; }

private:
    ReaderPool& pool_;
    std::uint64_t generation_ = 0;
    std::unique_ptr<Connection> reader_;
};

ReaderPool::ReaderPool(const Writer& writer) : writer_(writer), most_(std::max(1, writer.configuration().readers)) {}

std::unique_ptr<Connection> ReaderPool::take(std::uint64_t& generation) {
    for (;;)
        if (auto reader = tryTake(generation)) return reader;
}

std::unique_ptr<Connection> ReaderPool::tryTake(std::uint64_t& generation) {
    tarvo::platform::MutexLock lock(mutex_);
    auto available = [&] {
        mutex_.assumeHeld();
        return closed_ || !idle_.empty() || count_ < most_;
    };
    if (!available()) {
        tarvo::platform::BlockingScope waiting;
        changed_.wait(lock, available);
    }
    if (closed_) throwError(FailureKind::misuse, "the database is closed");
    generation = generation_;
    if (!idle_.empty()) {
        auto reader = std::move(idle_.back());
        idle_.pop_back();
        return reader;
    }
    ++count_;
    auto attachments = attachments_;
    lock.unlock();
    try {
        return open(attachments);
    } catch (const DatabaseError& error) {
        giveBack(nullptr, generation);
        // The process may have run out of file descriptors: the connections that are open serve all then.
        if (error.kind() != FailureKind::cannotOpen || !doWithoutOneMore()) throw;
        return nullptr;
    } catch (...) {
        giveBack(nullptr, generation);
        throw;
    }
}

bool ReaderPool::doWithoutOneMore() {
    tarvo::platform::MutexLock lock(mutex_);
    if (count_ == 0) return false;
    most_ = std::min(most_, count_);
    return true;
}

std::unique_ptr<Connection> ReaderPool::open(const std::vector<Attachment>& attachments) const {
    auto reader = std::make_unique<Connection>(writer_.path(), writer_.format(), Connection::Role::reader,
                                               writer_.configuration().busyTimeout, nullptr);
    for (auto& attachment : attachments) reader->attach(attachment);
    // The first read opens the log as well, so that a connection that is handed out can read.
    singleText(reader->handle(), "SELECT count(*) FROM sqlite_master WHERE 0", Stage::open);
    return reader;
}

void ReaderPool::giveBack(std::unique_ptr<Connection> reader, std::uint64_t generation) {
    tarvo::platform::MutexLock lock(mutex_);
    if (reader && generation == generation_ && !closed_) {
        idle_.push_back(std::move(reader));
    } else {
        lock.unlock();
        reader.reset();
        lock.lock();
        --count_;
    }
    // Under the lock: the one who waits may be about to end this pool.
    changed_.notifyAll();
}

void ReaderPool::read(KelvaDatabase::Block block) {
    Loan loan(*this);
    auto& reader = loan.reader();
    Access access(&writer_, reader, Access::Kind::reading);
    Connection::Writability readOnly(reader, false);
    reader.begin(false);
    try {
        block(reader.database());
    } catch (...) {
        reader.endRead();
        throw;
    }
    reader.endRead();
}

ReaderPool::Readers ReaderPool::outdated() {
    ++generation_;
    count_ -= static_cast<int>(idle_.size());
    return std::exchange(idle_, {});
}

void ReaderPool::attach(Attachment attachment) {
    Readers ending;
    tarvo::platform::MutexLock lock(mutex_);
    attachments_.push_back(std::move(attachment));
    ending = outdated();
}

void ReaderPool::detach(const std::string& name) {
    Readers ending;
    tarvo::platform::MutexLock lock(mutex_);
    std::erase_if(attachments_, [&](auto& attachment) { return attachment.name == name; });
    ending = outdated();
}

void ReaderPool::close() {
    Readers ending;
    tarvo::platform::MutexLock lock(mutex_);
    closed_ = true;
    changed_.notifyAll();
    ending = outdated();
    if (count_ == 0) return;
    tarvo::platform::BlockingScope waiting;
    changed_.wait(lock, [&] {
        mutex_.assumeHeld();
        return count_ == 0;
    });
}

}  // namespace kelva
