#include "bren_network/internal/TransferLoop.h"

#include <csignal>

#include "bren_network/internal/Tuning.h"
#include "platform/Log.h"

namespace bren {

using Kind = NetworkError::Kind;
using tarvo::platform::Clock;

namespace {

/// Signals belong to the host's threads; above all a write to a closed connection must not raise SIGPIPE here.
void blockSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

}  // namespace

TransferLoop::TransferLoop(std::shared_ptr<BufferBudget> budget)
    : budget_(std::move(budget)), multi_(curl_multi_init(), &curl_multi_cleanup) {
    if (!multi_) throw std::bad_alloc();
    canBeWoken_ = curl_multi_wakeup(multi_.get()) == CURLM_OK;
    curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, static_cast<long>(tuning::maximumRunning));
}

TransferLoop::~TransferLoop() { stop(Rest::ended); }

void TransferLoop::start() {
    thread_ = std::thread([this] { run(); });
}

void TransferLoop::submit(std::unique_ptr<Transfer> transfer, BrenTaskPriority priority) {
    {
        tarvo::platform::MutexLock lock(mutex_);
        arrived_.emplace_back(Place{priority, arrivals_++}, std::move(transfer));
    }
    wake();
}

void TransferLoop::stop(Rest rest) {
    {
        tarvo::platform::MutexLock lock(mutex_);
        if (!stopping_) stopping_ = rest;
    }
    wake();
    tarvo::platform::MutexLock lock(joining_);
    if (thread_.joinable()) thread_.join();
}

void TransferLoop::run() {
    blockSignals();
    for (;;) {
        takeIn();
        if (auto rest = stopping()) {
            if (rest == Rest::ended) endAll();
            return;
        }
        int running = 0;
        curl_multi_perform(multi_.get(), &running);
        finishDone();
        endStalled();
        startWaiting();
        curl_multi_poll(multi_.get(), nullptr, 0, static_cast<int>(nextWait().count()), nullptr);
    }
}

std::optional<TransferLoop::Rest> TransferLoop::stopping() {
    tarvo::platform::MutexLock lock(mutex_);
    return stopping_;
}

void TransferLoop::takeIn() {
    tarvo::platform::MutexLock lock(mutex_);
    for (auto& [place, transfer] : arrived_) waiting_.emplace(place, std::move(transfer));
    arrived_.clear();
}

bool TransferLoop::hasRoom(const Transfer& transfer) const {
    auto found = runningPerHost_.find(transfer.host());
    return found == runningPerHost_.end() || found->second < tuning::maximumRunningPerHost;
}

void TransferLoop::startWaiting() {
    for (auto next = waiting_.begin(); next != waiting_.end() && running_.size() < tuning::maximumRunning;) {
        if (budget_->isFull()) return;
        if (!hasRoom(*next->second)) {
            ++next;
            continue;
        }
        auto transfer = std::move(next->second);
        next = waiting_.erase(next);
        begin(std::move(transfer));
    }
}

void TransferLoop::begin(std::unique_ptr<Transfer> transfer) {
    if (!transfer->begin() || curl_multi_add_handle(multi_.get(), transfer->handle()) != CURLM_OK) {
        deliver(*transfer, transfer->fail(Kind::other));
        return;
    }
    ++runningPerHost_[transfer->host()];
    auto* handle = transfer->handle();
    running_.emplace(handle, std::move(transfer));
}

std::unique_ptr<Transfer> TransferLoop::takeOut(CURL* handle) {
    auto found = running_.find(handle);
    auto transfer = std::move(found->second);
    running_.erase(found);
    curl_multi_remove_handle(multi_.get(), handle);
    auto host = runningPerHost_.find(transfer->host());
    if (--host->second == 0) runningPerHost_.erase(host);
    return transfer;
}

void TransferLoop::finishDone() {
    int left = 0;
    while (auto* message = curl_multi_info_read(multi_.get(), &left)) {
        if (message->msg != CURLMSG_DONE) continue;
        // The message goes with the handle, so its result is read before.
        auto code = message->data.result;
        auto transfer = takeOut(message->easy_handle);
        deliver(*transfer, transfer->finish(code));
    }
}

void TransferLoop::endStalled() {
    auto now = Clock::steadyNow();
    std::vector<CURL*> stalled;
    for (auto& [handle, transfer] : running_)
        if (transfer->deadline() <= now) stalled.push_back(handle);
    for (auto* handle : stalled) {
        auto transfer = takeOut(handle);
        deliver(*transfer, transfer->fail(Kind::timeout));
    }
}

void TransferLoop::endAll() {
    takeIn();
    while (!running_.empty()) {
        auto transfer = takeOut(running_.begin()->first);
        deliver(*transfer, transfer->fail(Kind::shutDown));
    }
    for (auto& [place, transfer] : std::exchange(waiting_, {})) deliver(*transfer, transfer->fail(Kind::shutDown));
}

void TransferLoop::deliver(const Transfer& transfer, Outcome outcome) {
    if (outcome.error)
        tarvo::platform::log(
            tarvo::platform::LogLevel::warning, "network",
            "Request " + std::to_string(transfer.delivery()->taskNumber()) + " failed: " + outcome.error->message);
    auto bytes = outcome.body.size();
    budget_->add(bytes);
    transfer.delivery()->complete(std::move(outcome), [budget = budget_, bytes, weak = weak_from_this()] {
        if (!budget->remove(bytes)) return;
        if (auto loop = weak.lock()) loop->wake();
    });
}

std::chrono::milliseconds TransferLoop::nextWait() const {
    if (running_.empty()) return canBeWoken_ ? tuning::longestWaitIdle : tuning::longestWaitUnwoken;
    auto wait = canBeWoken_ ? tuning::longestWaitRunning : tuning::longestWaitUnwoken;
    auto now = Clock::steadyNow();
    for (auto& [handle, transfer] : running_)
        wait = std::min(wait, std::chrono::ceil<std::chrono::milliseconds>(transfer->deadline() - now));
    return std::max(wait, std::chrono::milliseconds(0));
}

}  // namespace bren
