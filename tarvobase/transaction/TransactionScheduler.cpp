#include "tarvobase/transaction/TransactionScheduler.h"

#include <utility>

#include "platform/Log.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/transaction/TransactionStatusObserver.h"

namespace tarvo {

namespace {

void logProgress(const std::string& text) { platform::log(platform::LogLevel::progress, "transactions", text); }

}  // namespace

TransactionScheduler::TransactionScheduler(Parts parts)
    : parts_(std::move(parts)),
      kinds_(parts_.isAttachmentSync ? kindsWhere(isFileUpload)
                                     : kindsWhere([](NTransaction::Kind kind) { return !isFileUpload(kind); })) {}

TransactionScheduler::~TransactionScheduler() { limit_.cancel(); }

/// Later, since callers may stand in a transaction of the database.
void TransactionScheduler::onQueue(std::function<void(TransactionScheduler&)> work) {
    criticalSectionQueue_->async([weak = platform::weakSelf(this), work = std::move(work)] {
        if (auto self = weak.lock()) work(*self);
    });
}

void TransactionScheduler::startSync() {
    {
        platform::MutexLock lock(mutex_);
        syncTransaction_ = true;
    }
    run();
}

void TransactionScheduler::stopSync() {
    platform::MutexLock lock(mutex_);
    syncTransaction_ = false;
}

void TransactionScheduler::run() {
    onQueue([](TransactionScheduler& self) { self.sync(); });
}

void TransactionScheduler::whenResting(std::function<void()> callback) {
    onQueue([callback = std::move(callback)](TransactionScheduler& self) mutable {
        self.resting_.push_back(std::move(callback));
        self.sync();
    });
}

bool TransactionScheduler::isOn() const {
    platform::MutexLock lock(mutex_);
    return syncTransaction_;
}

/// Everything that may let a transaction go ends here.
void TransactionScheduler::sync() {
    criticalSectionQueue_->assertCurrent();
    if (running_) return;
    auto picked = Picked::gaveUp;
    while (picked == Picked::gaveUp && isOn()) picked = pickNext();
    if (running_) return;
    logProgress(std::string("all txn synced. isAttachment: ") + (parts_.isAttachmentSync ? "true" : "false"));
    rest();
}

TransactionScheduler::Picked TransactionScheduler::pickNext() {
    auto runner = parts_.txnRunner.lock();
    share_ = runner ? runner->begin() : nullptr;
    if (!share_) return Picked::none;
    std::optional<NTransaction> givenUp;
    auto next = claimNext(*runner, givenUp);
    if (givenUp) {
        BrenNotificationCenter::shared().notify<TransactionStatusObserver>(
            true, [transaction = *givenUp](auto& observer) { observer.transactionGaveUp(transaction); });
        return Picked::gaveUp;
    }
    if (!next) return Picked::none;
    start(*next);
    return Picked::started;
}

/// Marks the next transaction as started, in the commit that has found it: no other process starts it as well. Sets
/// `givenUp` instead if it was started as often as is allowed.
std::optional<NTransaction> TransactionScheduler::claimNext(TransactionRunner& runner,
                                                            std::optional<NTransaction>& givenUp) {
    auto& store = *parts_.txnPersistence;
    // Without a transaction, which would hold up whoever writes. After one that was sent another one is likely.
    if (!std::exchange(isMoreLikely_, false))
        if (auto found = store.getNextRunnableTransaction(kinds_); !found || !found.value()) return std::nullopt;
    std::optional<NTransaction> claimed;
    bool isStored = parts_.databaseAdapter->transaction("start a transaction", [&] {
        auto found = store.getNextRunnableTransaction(kinds_);
        if (!found || !found.value()) return false;
        auto& next = *found.value();
        if (next.syncAttempt >= parts_.maxSyncAttempt) {
            givenUp = next;
            givenUp->errorResponse = ErrorResponse::maxSyncAttemptReached();
            return store.setTransactionErrors({{next.id, *givenUp->errorResponse}});
        }
        claimed = next;
        claimed->status = NTransaction::Status::syncing();
        return store.setSyncAttempt(++claimed->syncAttempt, claimed->status, claimed->id) && runner.noteStart(*claimed);
    });
    if (isStored) return claimed;
    if (claimed) runner.forgetStart(*claimed);
    givenUp.reset();
    return std::nullopt;
}

void TransactionScheduler::start(const NTransaction& transaction) {
    auto place = ++lastPlace_;
    running_ = place;
    limit_ = criticalSectionQueue_->asyncAfter(parts_.maxSyncTimeInterval, [weak = platform::weakSelf(this), place] {
        auto self = weak.lock();
        if (!self || self->running_ != place) return;
        self->running_.reset();
        self->sync();
    });
    auto runner = parts_.txnRunner.lock();
    if (!runner) return finish(place);
    isMoreLikely_ = true;
    runner->run(transaction, [weak = platform::weakSelf(this), place] {
        if (auto self = weak.lock()) self->onQueue([place](TransactionScheduler& each) { each.finish(place); });
    });
}

/// A completion after the limit frees no second place: the next transaction may be running.
void TransactionScheduler::finish(std::int64_t place) {
    if (running_ != place) return logProgress("timeout occured");
    running_.reset();
    limit_.cancel();
    sync();
}

void TransactionScheduler::rest() {
    share_.reset();
    for (auto& callback : std::exchange(resting_, {})) callback();
}

}  // namespace tarvo
