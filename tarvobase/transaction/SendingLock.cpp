#include "tarvobase/transaction/SendingLock.h"

#include <cstddef>
#include <utility>

#include "platform/FileLock.h"
#include "platform/ThreadSafety.h"

namespace tarvo {

struct SendingLock::Shares {
    bool add() {
        platform::MutexLock lock(mutex);
        if (count == 0 && file && !file->tryLock()) return false;
        ++count;
        return true;
    }
    void remove() {
        platform::MutexLock lock(mutex);
        if (--count == 0 && file) file->unlock();
    }

    platform::Mutex mutex;
    std::optional<platform::FileLock> file TARVO_GUARDED_BY(mutex);
    std::size_t count TARVO_GUARDED_BY(mutex) = 0;
};

SendingLock::SendingLock(std::optional<std::string> file) : shares_(std::make_shared<Shares>()) {
    platform::MutexLock lock(shares_->mutex);
    if (file) shares_->file.emplace(*std::move(file));
}

SendingLock::Share SendingLock::tryTake() const {
    if (!shares_->add()) return nullptr;
    return Share(shares_.get(), [shares = shares_](const void*) { shares->remove(); });
}

}  // namespace tarvo
