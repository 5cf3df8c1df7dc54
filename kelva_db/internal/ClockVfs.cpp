#include "kelva_db/internal/ClockVfs.h"

#include <sqlite3.h>

#include "kelva_db/internal/Sqlite.h"
#include "platform/Clock.h"

namespace kelva {

namespace {

constexpr const char* name = "tarvo_clock";

// SQLite counts milliseconds of the Julian day.
constexpr sqlite3_int64 julianDayOf1970 = 210866760000000;

int currentTimeInt64(sqlite3_vfs*, sqlite3_int64* out) {
    *out = julianDayOf1970 + tarvo::platform::Clock::now().time_since_epoch().count();
    return SQLITE_OK;
}

int currentTime(sqlite3_vfs* vfs, double* out) {
    sqlite3_int64 milliseconds = 0;
    currentTimeInt64(vfs, &milliseconds);
    *out = static_cast<double>(milliseconds) / 86400000.0;
    return SQLITE_OK;
}

bool registerVfs() {
    auto system = sqlite3_vfs_find(nullptr);
    if (!system) return false;
    // A copy with two functions of its own: all others find what they need in the copied fields.
    static sqlite3_vfs vfs = *system;
    vfs.zName = name;
    vfs.pNext = nullptr;
    vfs.xCurrentTime = currentTime;
    if (vfs.iVersion >= 2) vfs.xCurrentTimeInt64 = currentTimeInt64;
    return sqlite3_vfs_register(&vfs, 0) == SQLITE_OK;
}

}  // namespace

const char* clockVfsName() {
    static bool registered = sqlite3_initialize() == SQLITE_OK && registerVfs();
    if (!registered) throwError(FailureKind::cannotOpen, "the file layer of the database could not be set up");
    return name;
}

}  // namespace kelva
