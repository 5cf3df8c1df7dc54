#include "platform/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/Log.h"

namespace tarvo::platform {

bool FileLock::tryLock() {
    if (isHeld()) return true;
    auto file = ::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file >= 0 && ::flock(file, LOCK_EX | LOCK_NB) == 0) {
        file_ = file;
        return true;
    }
    auto reason = errno;
    if (file >= 0) ::close(file);
    if (reason != EWOULDBLOCK)
        log(LogLevel::warning, "files", std::string("a lock file cannot be used: ") + std::strerror(reason));
    return false;
}

// Closing the file frees the lock.
void FileLock::unlock() {
    if (isHeld()) ::close(file_);
    file_ = -1;
}

}  // namespace tarvo::platform
