#pragma once

#include <map>
#include <memory>
#include <thread>
#include <unordered_map>
#include <vector>

#include "bren_network/internal/BufferBudget.h"
#include "bren_network/internal/Transfer.h"
#include "platform/ThreadSafety.h"

namespace bren {

/// The thread of the transfers. A request goes from "waiting" (sorted by priority, then arrival) to "running" as soon
/// as the limits in Tuning.h and the budget of buffered bodies leave a place, and ends when libcurl says so, when no
/// byte has moved for its time-out, or when the loop stops. No code of a caller runs on this thread.
class TransferLoop : public std::enable_shared_from_this<TransferLoop> {
public:
    explicit TransferLoop(std::shared_ptr<BufferBudget> budget);
    ~TransferLoop();

    /// Starts the thread. Throws `std::system_error` when there is none to be had, `std::bad_alloc` without memory.
    void start();
    /// Any thread; not after `stop`.
    void submit(std::unique_ptr<Transfer> transfer, BrenTaskPriority priority);
    void wake() { curl_multi_wakeup(multi_.get()); }

    /// `ended`: every transfer gets its completion, with the failure "shut down". `abandoned`: they are left as they
    /// stand, for the end of the process, when what their handlers refer to may be gone.
    enum class Rest { ended, abandoned };
    /// Returns when the thread has ended; may be called again.
    void stop(Rest rest);

private:
    struct Place {
        BrenTaskPriority priority;
        std::uint64_t arrival;
        bool operator<(const Place& other) const {
            return priority != other.priority ? priority > other.priority : arrival < other.arrival;
        }
    };

    void run();
    std::optional<Rest> stopping();
    void takeIn();
    void startWaiting();
    bool hasRoom(const Transfer& transfer) const;
    void begin(std::unique_ptr<Transfer> transfer);
    void finishDone();
    void endStalled();
    std::unique_ptr<Transfer> takeOut(CURL* handle);
    void endAll();
    void deliver(const Transfer& transfer, Outcome outcome);
    std::chrono::milliseconds nextWait() const;

    const std::shared_ptr<BufferBudget> budget_;
    const std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> multi_;
    std::thread thread_;
    tarvo::platform::Mutex joining_;

    tarvo::platform::Mutex mutex_;
    std::vector<std::pair<Place, std::unique_ptr<Transfer>>> arrived_ TARVO_GUARDED_BY(mutex_);
    std::uint64_t arrivals_ TARVO_GUARDED_BY(mutex_) = 0;
    std::optional<Rest> stopping_ TARVO_GUARDED_BY(mutex_);

    // Of the thread alone.
    std::map<Place, std::unique_ptr<Transfer>> waiting_;
    std::unordered_map<CURL*, std::unique_ptr<Transfer>> running_;
    std::unordered_map<std::string, std::size_t> runningPerHost_;
    /// Whether libcurl had a file descriptor left to be woken by.
    bool canBeWoken_ = false;
};

}  // namespace bren
