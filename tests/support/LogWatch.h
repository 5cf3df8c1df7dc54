#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/Log.h"

namespace tarvo {

/// Collects the log while it lives, and fails the test for each warning or error that nobody expected. A member of a
/// fixture, or a local variable of a test. Restores the former sink at its end.
class LogWatch {
public:
    LogWatch() : former_(platform::setLogSink([this](const platform::LogLine& line) { add(line); })) {}
    ~LogWatch() {
        platform::setLogSink(std::move(former_));
        for (auto& warning : unexpected()) ADD_FAILURE() << "unexpected warning in the log: " << warning;
    }
    LogWatch(const LogWatch&) = delete;
    LogWatch& operator=(const LogWatch&) = delete;

    /// Warnings and errors that contain the text are fine, whether they come before or after this call.
    void expectWarning(std::string part) {
        std::lock_guard lock(mutex_);
        expected_.push_back(std::move(part));
    }

    /// The texts of all lines so far, in their order.
    std::vector<std::string> lines() const {
        std::lock_guard lock(mutex_);
        return lines_;
    }

    /// The texts of the warnings and errors so far that nobody expected.
    std::vector<std::string> unexpected() const {
        std::lock_guard lock(mutex_);
        auto rest = warnings_;
        std::erase_if(rest, [this](auto& warning) {
            return std::any_of(expected_.begin(), expected_.end(),
                               [&](auto& part) { return warning.find(part) != warning.npos; });
        });
        return rest;
    }

private:
    void add(const platform::LogLine& line) {
        std::lock_guard lock(mutex_);
        lines_.emplace_back(line.text);
        if (line.level >= platform::LogLevel::warning) warnings_.emplace_back(line.text);
    }

    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
    std::vector<std::string> warnings_;
    std::vector<std::string> expected_;
    platform::LogSink former_;
};

}  // namespace tarvo
