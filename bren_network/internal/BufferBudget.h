#pragma once

#include <atomic>
#include <cstdint>

#include "bren_network/internal/Tuning.h"

namespace bren {

/// Counts the bytes of bodies that have arrived and wait until their completion has run. Safe from any thread.
class BufferBudget {
public:
    void setLimit(int kilobytes) { limit_ = std::int64_t{1024} * (kilobytes > 0 ? kilobytes : 0); }
    /// Whether no further request should begin. With nothing waiting there is always room, whatever the limit.
    bool isFull() const { return waiting_ > limit_; }
    void add(std::size_t bytes) { waiting_ += static_cast<std::int64_t>(bytes); }
    /// True when this made room again.
    bool remove(std::size_t bytes) {
        auto before = waiting_.fetch_sub(static_cast<std::int64_t>(bytes));
        return before > limit_ && before - static_cast<std::int64_t>(bytes) <= limit_;
    }

private:
    std::atomic<std::int64_t> limit_ = std::int64_t{1024} * tuning::bufferedKilobytes;
    std::atomic<std::int64_t> waiting_ = 0;
};

}  // namespace bren
