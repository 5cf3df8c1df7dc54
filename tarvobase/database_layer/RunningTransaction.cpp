#include "tarvobase/database_layer/RunningTransaction.h"

#include <utility>

namespace tarvo {

namespace {

thread_local RunningTransaction* innermostTransaction = nullptr;

}  // namespace

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
