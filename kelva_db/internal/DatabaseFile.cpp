#include "kelva_db/internal/DatabaseFile.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "kelva_db/internal/ClockVfs.h"
#include "kelva_db/internal/Sqlite.h"

namespace kelva {

namespace {

constexpr std::size_t headBytes = 16;
constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;

/// A file that is open in SQLite's file layer.
class LayerFile {
public:
    LayerFile(sqlite3_vfs* vfs, const std::string& fullPath)
        : memory_(static_cast<std::size_t>(vfs->szOsFile) / sizeof(std::max_align_t) + 1) {
        if (vfs->xOpen(vfs, fullPath.c_str(), file(), SQLITE_OPEN_READONLY | SQLITE_OPEN_MAIN_DB, nullptr) != SQLITE_OK)
            throwError(FailureKind::cannotOpen, "the database file cannot be opened");
    }
    ~LayerFile() { file()->pMethods->xClose(file()); }
    LayerFile(const LayerFile&) = delete;

    std::uint64_t size() {
        sqlite3_int64 size = 0;
        if (file()->pMethods->xFileSize(file(), &size) != SQLITE_OK) throwUnreadable();
        return static_cast<std::uint64_t>(size);
    }
    std::string head(std::size_t count) {
        std::string head(count, '\0');
        if (count > 0 && file()->pMethods->xRead(file(), head.data(), static_cast<int>(count), 0) != SQLITE_OK)
            throwUnreadable();
        return head;
    }

private:
    sqlite3_file* file() { return reinterpret_cast<sqlite3_file*>(memory_.data()); }
    [[noreturn]] static void throwUnreadable() {
        throwError(FailureKind::cannotOpen, "the database file cannot be read");
    }
    std::vector<std::max_align_t> memory_;
};

}  // namespace

bool isMemoryDatabase(const std::string& path) {
    if (path == ":memory:") return true;
    return path.starts_with("file:") &&
           (path.find(":memory:") != std::string::npos || path.find("mode=memory") != std::string::npos);
}

FileBeginning beginningOf(const std::string& path) {
    auto vfs = sqlite3_vfs_find(clockVfsName());
    // SQLite hands absolute names to its file layer, and this one leaves the name to live as long as the file.
    std::string full(static_cast<std::size_t>(vfs->mxPathname) + 1, '\0');
    int exists = 0;
    if (vfs->xFullPathname(vfs, path.c_str(), vfs->mxPathname + 1, full.data()) != SQLITE_OK ||
        vfs->xAccess(vfs, full.c_str(), SQLITE_ACCESS_EXISTS, &exists) != SQLITE_OK || !exists)
        return {};
    LayerFile file(vfs, full);
    auto size = file.size();
    return {file.head(std::min<std::size_t>(headBytes, size)), size};
}

bool isPlainHead(const std::string& head) { return head.starts_with("SQLite format 3"); }

void keepToOwner(const std::string& path) {
    // A file that this call makes was open nowhere, so that closing it drops nobody's locks.
    if (auto file = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, ownerOnly); file >= 0) {
        ::close(file);
        return;
    }
    for (auto suffix : {"", "-wal", "-shm", "-journal"}) {
        auto name = path + suffix;
        struct stat status {};
        if (::stat(name.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
        // Somebody else's file stays as its owner wants it.
        if ((status.st_mode & 0777) != ownerOnly) ::chmod(name.c_str(), ownerOnly);
    }
}

}  // namespace kelva
