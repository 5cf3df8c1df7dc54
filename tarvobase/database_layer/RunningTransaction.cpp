#include "tarvobase/database_layer/RunningTransaction.h"

#include <utility>
#include <vector>

#include "tarvobase/database_layer/TransactionEnd.h"

namespace tarvo {

namespace {

thread_local RunningTransaction* innermostTransaction = nullptr;
thread_local int openFrames = 0;
thread_local std::vector<std::function<void()>> workAtTheEnd;

}  // namespace

bool isInTransaction() { return openFrames > 0; }

void afterTransaction(std::function<void()> work) {
    if (!isInTransaction()) return work();
    workAtTheEnd.push_back(std::move(work));
}

RunningTransaction::Frame::Frame() { ++openFrames; }
RunningTransaction::Frame::~Frame() {
    if (--openFrames > 0) return;
    for (auto& work : std::exchange(workAtTheEnd, {})) work();
}

RunningTransaction::RunningTransaction(const DatabaseAdapter& adapter, std::shared_ptr<kelva::KelvaDatabase> database,
                                       kelva::Database& writer, bool isTolerant)
    : adapter_(adapter),
      database_(std::move(database)),
      writer_(writer),
      outer_(innermostTransaction),
      isTolerant_(isTolerant) {
    innermostTransaction = this;
}

RunningTransaction::~RunningTransaction() { innermostTransaction = outer_; }

RunningTransaction* RunningTransaction::find(const DatabaseAdapter& adapter) {
    auto running = innermostTransaction;
    while (running && &running->adapter_ != &adapter) running = running->outer_;
    return running;
}

void RunningTransaction::fail(bool isRejected) {
    for (auto running = this; running; running = running->outer_) {
        if (&running->adapter_ != &adapter_) continue;
        if (isRejected && running->isTolerant_) return;
        running->failed_ = true;
    }
}

}  // namespace tarvo
