#pragma once

#include <cstdint>
#include <deque>
#include <fstream>
#include <mutex>
#include <string>

#include "sandbox/Message.h"

namespace tarvo::sandbox {

/// What became of one request. Tokens are in no member.
struct LoggedRequest {
    std::string method;
    std::string path;
    Value parameters;
    std::string account;
    /// Of HTTP; 0 when no answer was sent.
    int status = 0;
    std::string fault;
    std::int64_t receivedAt = 0;
    std::int64_t milliseconds = 0;
};

/// The requests so far, for tests and for people: the last ten thousand in memory, all of them as JSON lines in a file
/// when a path is given. Any thread.
class RequestLog {
public:
    /// `logValues` keeps the values of parameters beside their names, those of tokens never.
    RequestLog(const std::string& path, bool logValues);

    Value describeParameters(const Request& request) const;
    void add(const LoggedRequest& request);
    ValueList all() const;
    void clear();
    std::int64_t total() const;

private:
    static constexpr std::size_t kept = 10'000;

    const bool logValues_;
    mutable std::mutex mutex_;
    std::deque<Value> requests_;
    std::int64_t total_ = 0;
    std::ofstream file_;
};

}  // namespace tarvo::sandbox
