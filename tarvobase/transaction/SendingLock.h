#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace tarvo {

/// The right to send the changes of a database, which one process has at a time. The two queues share it: it is taken
/// for as long as either of them is sending. Any thread may use it, and nothing waits.
class SendingLock {
public:
    /// A share of the lock, which may be released on any thread.
    using Share = std::shared_ptr<const void>;

    /// How long to wait before the next try while another process has the lock.
    static constexpr std::chrono::milliseconds retryWait{500};

    /// Takes the path of a lock file. Without one nobody else can send, as with a database in memory.
    explicit SendingLock(std::optional<std::string> file = std::nullopt);

    /// Returns a share, or null while another process has the lock. The lock is free once all shares are released.
    Share tryTake() const;

private:
    struct Shares;
    const std::shared_ptr<Shares> shares_;
};

}  // namespace tarvo
