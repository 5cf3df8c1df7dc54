#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace tarvo {

class UserDefaultsProtocol;

/// A counter in the settings that all accounts share. Any thread may use it; it blocks for the disk.
class IdCounter {
public:
    IdCounter(std::string key, std::shared_ptr<UserDefaultsProtocol> userDefaults);

    /// Returns the next number, which is above every number that was returned before, also by another process, and
    /// above `highest`: settings and database may be lost without each other. If the disk refuses the counter, the
    /// number follows the last one that is known, and a warning is logged.
    std::int64_t next(std::int64_t highest);
    /// Begins again at 1.
    void reset();

private:
    const std::string key_;
    const std::shared_ptr<UserDefaultsProtocol> userDefaults_;
    std::atomic<std::int64_t> last_ = 0;  // what this object returned last
};

}  // namespace tarvo
