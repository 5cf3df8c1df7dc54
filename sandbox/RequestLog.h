#pragma once

#include <cstdint>
#include <deque>
#include <fstream>
#include <string>

#include "platform/ThreadSafety.h"
#include "sandbox/Message.h"

namespace tarvo::sandbox {

/// Records what became of one request. No member holds a token.
struct LoggedRequest {
    std::string method;
    std::string path;
    Value parameters;
    std::string account;
    std::string organisation;
    std::string transactionId;
    /// The HTTP status; 0 when no answer was sent.
    int status = 0;
    std::string fault;
    std::int64_t receivedAt = 0;
    std::int64_t milliseconds = 0;
};

/// Keeps the requests for tests and for people: the last ten thousand in memory, and all of them as JSON lines in a
/// file when a path is given. Safe to use from any thread.
class RequestLog {
public:
    /// `logValues` keeps the values of parameters beside their names, except those of tokens.
    RequestLog(const std::string& path, bool logValues);

    Value describeParameters(const Request& request) const;
    void add(const LoggedRequest& request);
    ValueList all() const;
    void clear();
    std::int64_t total() const;

private:
    static constexpr std::size_t capacity = 10'000;

    const bool logValues_;
    mutable platform::Mutex mutex_;
    std::deque<Value> requests_ TARVO_GUARDED_BY(mutex_);
    std::int64_t total_ TARVO_GUARDED_BY(mutex_) = 0;
    std::ofstream file_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo::sandbox
