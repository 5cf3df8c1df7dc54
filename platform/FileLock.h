#pragma once

#include <string>
#include <utility>

namespace tarvo::platform {

/// A lock that at most one holder of all processes has: a file that the system locks, and frees when the process ends,
/// however it ends. The file is made if it is missing, for its owner alone, and stays. Its content has no meaning.
/// An object is used by one thread at a time.
class FileLock {
public:
    explicit FileLock(std::string path) : path_(std::move(path)) {}
    ~FileLock() { unlock(); }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    /// Takes the lock if nobody else has it, and never waits. Returns whether this object holds it. A file that cannot
    /// be made or locked is logged and counts as held by somebody else.
    bool tryLock();
    void unlock();
    bool isHeld() const { return file_ >= 0; }

private:
    const std::string path_;
    int file_ = -1;
};

}  // namespace tarvo::platform
