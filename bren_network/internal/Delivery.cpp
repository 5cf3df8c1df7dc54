#include "bren_network/internal/Delivery.h"

namespace bren {

namespace {

/// Runs its work when the scope is left, whichever way.
class Finally {
public:
    explicit Finally(tarvo::platform::Work& work) : work_(work) {}
    ~Finally() {
        if (work_) work_();
    }
    Finally(const Finally&) = delete;
    Finally& operator=(const Finally&) = delete;

private:
    tarvo::platform::Work& work_;
};

double partDone(std::int64_t done, std::int64_t total) {
    return total > 0 ? std::min(1.0, double(done) / double(total)) : 0.0;
}

}  // namespace

Delivery::Delivery(std::shared_ptr<tarvo::DispatchQueue> queue, int taskNumber, BrenNetworkManager::Task& task)
    : queue_(std::move(queue)),
      taskNumber_(taskNumber),
      identifier_(std::move(task.identifier)),
      progressPercent_(std::move(task.progressPercent)),
      progressData_(std::move(task.progressData)),
      completion_(std::move(task.completion)) {}

void Delivery::progressed(std::int64_t done, std::int64_t total, std::string_view piece) {
    tarvo::platform::MutexLock lock(mutex_);
    bool mustSchedule = !unreported_;
    if (!unreported_) unreported_.emplace();
    unreported_->done = done;
    unreported_->total = total;
    unreported_->pieces += piece;
    lock.unlock();
    if (mustSchedule) queue_->async([self = shared_from_this()] { self->reportProgress(); });
}

void Delivery::reportProgress() {
    queue_->assertCurrent();
    tarvo::platform::MutexLock lock(mutex_);
    auto progress = std::exchange(unreported_, std::nullopt).value();
    lock.unlock();
    auto part = partDone(progress.done, progress.total);
    auto total = progress.total > 0 ? progress.total : -1;
    if (progressPercent_) progressPercent_(float(part), progress.done, total, identifier_, taskNumber_);
    if (progressData_) progressData_(Data(std::move(progress.pieces)), part, identifier_, taskNumber_);
}

void Delivery::complete(Outcome outcome, tarvo::platform::Work afterwards) {
    if (std::exchange(isComplete_, true)) return;
    queue_->async(
        [self = shared_from_this(), outcome = std::move(outcome), afterwards = std::move(afterwards)]() mutable {
            Finally finally(afterwards);
            self->runCompletion(std::move(outcome));
        });
}

void Delivery::runCompletion(Outcome outcome) {
    queue_->assertCurrent();
    // The handlers leave the object first: what they hold is released here, whoever still holds this object.
    auto percent = std::exchange(progressPercent_, nullptr);
    auto data = std::exchange(progressData_, nullptr);
    auto completion = std::exchange(completion_, nullptr);
    if (completion)
        completion(std::move(outcome.body), std::move(outcome.response), std::move(outcome.error), taskNumber_);
}

}  // namespace bren
