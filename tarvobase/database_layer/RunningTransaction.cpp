#include "tarvobase/database_layer/RunningTransaction.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "tarvobase/database_layer/TransactionEnd.h"

namespace tarvo {

namespace {

thread_local RunningTransaction* innermostTransaction = nullptr;
thread_local int openFrames = 0;

struct WorkAtTheEnd {
    std::function<void()> work;
    bool needsCommit;
};
thread_local std::vector<WorkAtTheEnd> workAtTheEnd;  // in the order in which it was given

}  // namespace

bool isInTransaction() { return openFrames > 0; }

void afterTransaction(std::function<void()> work) {
    if (!isInTransaction()) return work();
    workAtTheEnd.push_back({std::move(work), false});
}

void afterCommit(std::function<void()> work) {
    if (!isInTransaction()) return work();
    workAtTheEnd.push_back({std::move(work), true});
}

RunningTransaction::Frame::Frame() : begin_(workAtTheEnd.size()) { ++openFrames; }
RunningTransaction::Frame::~Frame() {
    if (!isWorkKept_) {
        auto needsCommit = [](const WorkAtTheEnd& each) { return each.needsCommit; };
        auto begin = workAtTheEnd.begin() + static_cast<std::ptrdiff_t>(begin_);
        workAtTheEnd.erase(std::remove_if(begin, workAtTheEnd.end(), needsCommit), workAtTheEnd.end());
    }
    if (--openFrames > 0) return;
    auto all = std::exchange(workAtTheEnd, {});
    for (auto& each : all) each.work();
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
