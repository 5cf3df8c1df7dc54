// A library that a test loads into a program (LD_PRELOAD). It brings about one fault at a point that is counted in
// commits, so that each run meets it at the same place. The environment says which:
//
//     TARVO_FAULT=kill        ends the program right after the commit, without a chance to tidy up
//     TARVO_FAULT=killBefore  ends it when the commit is written, before it is synced
//     TARVO_FAULT=full        from that commit on the disk takes no more bytes below TARVO_FAULT_UNDER; with
//                             TARVO_FAULT_WRITES=N it refuses N writes and then has room again
//     TARVO_FAULT=stop        stops the program before it begins that transaction, until it gets SIGCONT
//     TARVO_FAULT_AT=N        which commit, from 1; for `stop` which transaction; 0 for a disk that is full from the
//     start TARVO_FAULT_COUNT=FILE  holds "commits transactions" of the program so far TARVO_FAULT_HURRY=N     waits
//     for locks take the Nth part of their time
//
// A commit is a sync of a write-ahead log; a transaction begins with the writer's lock on its index.

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

std::string setting(const char* name) {
    auto value = std::getenv(name);
    return value ? value : "";
}

struct Fault {
    const std::string kind = setting("TARVO_FAULT");
    const long at = std::atol(setting("TARVO_FAULT_AT").c_str());
    const std::string under = setting("TARVO_FAULT_UNDER");
    const std::string countFile = setting("TARVO_FAULT_COUNT");
    const long hurry = std::atol(setting("TARVO_FAULT_HURRY").c_str());
    std::atomic<long> writesToRefuse = std::atol(setting("TARVO_FAULT_WRITES").c_str());
    std::atomic<long> commits = 0, transactions = 0;
    std::atomic<bool> isFull = kind == "full" && at == 0;

    static Fault& shared() {
        static Fault fault;
        return fault;
    }
};

template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

std::string pathOf(int file) {
    char path[4096];
    auto length = ::readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), path, sizeof path);
    return length > 0 ? std::string(path, static_cast<std::size_t>(length)) : "";
}

void writeCounts(Fault& fault) {
    if (fault.countFile.empty()) return;
    auto file = std::fopen(fault.countFile.c_str(), "w");
    if (!file) return;
    std::fprintf(file, "%ld %ld\n", fault.commits.load(), fault.transactions.load());
    std::fclose(file);
}

void noteSyncBegins(int file) {
    auto& fault = Fault::shared();
    if (fault.kind != "killBefore" || !pathOf(file).ends_with("-wal")) return;
    if (fault.commits + 1 == fault.at) ::raise(SIGKILL);
}

void noteSync(int file) {
    if (!pathOf(file).ends_with("-wal")) return;
    auto& fault = Fault::shared();
    auto number = ++fault.commits;
    writeCounts(fault);
    if (number != fault.at) return;
    if (fault.kind == "kill") ::raise(SIGKILL);
    if (fault.kind == "full") fault.isFull = true;
}

void noteWriterLock() {
    auto& fault = Fault::shared();
    auto number = ++fault.transactions;
    if (number == fault.at && fault.kind == "stop") ::raise(SIGSTOP);
}

bool refusesWrite(int file) {
    auto& fault = Fault::shared();
    if (!fault.isFull || !pathOf(file).starts_with(fault.under)) return false;
    if (fault.writesToRefuse > 0 && --fault.writesToRefuse == 0) fault.isFull = false;
    errno = ENOSPC;
    return true;
}

}  // namespace

extern "C" {

int fdatasync(int file) {
    static auto original = next<int(int)>("fdatasync");
    noteSyncBegins(file);
    auto result = original(file);
    noteSync(file);
    return result;
}

int fsync(int file) {
    static auto original = next<int(int)>("fsync");
    noteSyncBegins(file);
    auto result = original(file);
    noteSync(file);
    return result;
}

ssize_t write(int file, const void* bytes, size_t count) {
    static auto original = next<ssize_t(int, const void*, size_t)>("write");
    return refusesWrite(file) ? -1 : original(file, bytes, count);
}

ssize_t pwrite64(int file, const void* bytes, size_t count, off64_t offset) {
    static auto original = next<ssize_t(int, const void*, size_t, off64_t)>("pwrite64");
    return refusesWrite(file) ? -1 : original(file, bytes, count, offset);
}

int fcntl64(int file, int command, ...) {
    static auto original = next<int(int, int, ...)>("fcntl64");
    va_list arguments;
    va_start(arguments, command);
    auto argument = va_arg(arguments, void*);
    va_end(arguments);
    constexpr off_t writerLock = 120;  // of the index of the log
    if (command == F_SETLK) {
        auto& lock = *static_cast<struct flock*>(argument);
        if (lock.l_type == F_WRLCK && lock.l_start == writerLock && pathOf(file).ends_with("-shm")) noteWriterLock();
    }
    return original(file, command, argument);
}

int usleep(useconds_t microseconds) {
    static auto original = next<int(useconds_t)>("usleep");
    auto hurry = Fault::shared().hurry;
    return original(hurry > 1 ? microseconds / static_cast<useconds_t>(hurry) : microseconds);
}
}
