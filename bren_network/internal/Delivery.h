#pragma once

#include <cstdint>
#include <memory>

#include "bren_network/BrenNetworkManager.h"
#include "platform/ThreadSafety.h"

namespace bren {

/// What became of a request.
struct Outcome {
    Data body;
    std::optional<URLResponse> response;
    std::optional<NetworkError> error;
};

/// How far a transfer is, and the pieces of its body that no handler has seen.
struct Progress {
    std::int64_t done = 0;
    std::int64_t total = 0;
    std::string pieces;
};

/// The way from a transfer to the caller's handlers: every handler runs on the network queue, without a lock, and is
/// released there once the completion has run. `progressed` and `complete` are called by one thread at a time.
class Delivery : public std::enable_shared_from_this<Delivery> {
public:
    /// Takes the handlers and the identifier out of the task.
    Delivery(std::shared_ptr<tarvo::DispatchQueue> queue, int taskNumber, BrenNetworkManager::Task& task);

    int taskNumber() const { return taskNumber_; }
    bool wantsProgress() const { return progressPercent_ || progressData_; }
    bool wantsPieces() const { return progressData_ != nullptr; }

    /// Notes how far the transfer is. While an earlier note waits for the queue the newer one replaces it and pieces
    /// are joined, so that a slow handler never lets items pile up. `total` is 0 while it is not known.
    void progressed(std::int64_t done, std::int64_t total, std::string_view piece);

    /// Brings the outcome; later calls do nothing. `afterwards` runs after the completion, also when that throws.
    void complete(Outcome outcome, tarvo::platform::Work afterwards = {});

private:
    void reportProgress();
    void runCompletion(Outcome outcome);

    const std::shared_ptr<tarvo::DispatchQueue> queue_;
    const int taskNumber_;
    const std::optional<std::string> identifier_;
    BrenNetworkManager::ProgressPercentHandler progressPercent_;
    BrenNetworkManager::ProgressDataHandler progressData_;
    BrenNetworkManager::CompletionHandler completion_;
    bool isComplete_ = false;

    tarvo::platform::Mutex mutex_;
    std::optional<Progress> unreported_ TARVO_GUARDED_BY(mutex_);  // present while an item that reports it waits
};

}  // namespace bren
