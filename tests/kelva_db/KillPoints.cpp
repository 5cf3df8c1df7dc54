#include "tests/kelva_db/KillPoints.h"

#include <dlfcn.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

namespace kelva::tests {

namespace {

std::atomic<long> callsLeft = 0;  // 0 while nothing is armed

}  // namespace

void dieAtCall(long number) { callsLeft = number; }

}  // namespace kelva::tests

namespace {

void maybeDie() {
    if (kelva::tests::callsLeft > 0 && --kelva::tests::callsLeft == 0) ::kill(::getpid(), SIGKILL);
}

template <class Call, class... Arguments>
auto systemCall(const char* name, Arguments... arguments) {
    maybeDie();
    return reinterpret_cast<Call*>(::dlsym(RTLD_NEXT, name))(arguments...);
}

}  // namespace

// The database library finds these before those of the system.
extern "C" {
int fsync(int file) { return systemCall<int(int)>("fsync", file); }
int fdatasync(int file) { return systemCall<int(int)>("fdatasync", file); }
int unlink(const char* path) noexcept { return systemCall<int(const char*)>("unlink", path); }
int rename(const char* from, const char* to) noexcept {
    return systemCall<int(const char*, const char*)>("rename", from, to);
}
int ftruncate64(int file, off64_t size) noexcept { return systemCall<int(int, off64_t)>("ftruncate64", file, size); }
ssize_t pwrite64(int file, const void* data, size_t count, off64_t at) {
    return systemCall<ssize_t(int, const void*, size_t, off64_t)>("pwrite64", file, data, count, at);
}
}
