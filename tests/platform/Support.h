#pragma once

#include <latch>
#include <mutex>
#include <string>
#include <vector>

#include "platform/DispatchQueue.h"
#include "platform/Files.h"
#include "platform/ProgrammingError.h"

namespace tarvo::platform::testing {

using namespace std::chrono_literals;

/// Long enough that only a hang reaches it.
constexpr auto forever = 60s;

/// Things that happened, in their order, reported from any thread.
template <class T>
class Journal {
public:
    void add(T entry) {
        std::lock_guard lock(mutex_);
        entries_.push_back(std::move(entry));
    }
    std::vector<T> entries() const {
        std::lock_guard lock(mutex_);
        return entries_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<T> entries_;
};

/// Collects programming errors for the length of a test instead of ending the process.
class CaughtErrors {
public:
    CaughtErrors()
        : before_(setProgrammingErrorHandler([this](std::string_view what) { told_.add(std::string(what)); })) {}
    ~CaughtErrors() { setProgrammingErrorHandler(before_); }
    std::vector<std::string> told() const { return told_.entries(); }
    std::size_t count() const { return told().size(); }

private:
    Journal<std::string> told_;
    ProgrammingErrorHandler before_;
};

/// A folder of its own for a test.
class TemporaryFolder {
public:
    std::string file(std::string_view name) const { return path_ + "/" + std::string(name); }
    const std::string& path() const { return path_; }
    ~TemporaryFolder() { files::remove(path_); }

private:
    std::string path_ = files::makeTemporaryDirectory("tarvo-platform-");
};

}  // namespace tarvo::platform::testing
