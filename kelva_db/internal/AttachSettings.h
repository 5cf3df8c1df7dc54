#pragma once

#include <string>

#include "kelva_db/internal/FileFormat.h"
#include "platform/ThreadSafety.h"

namespace kelva {

/// SQLCipher takes the page size and generation of an attached file from settings of the process, which stand as long
/// as this lives. A library of one generation ignores the setting of the other.
class AttachSettings {
public:
    AttachSettings(sqlite3* handle, const FileFormat& format)
        : lock_(mutex_),
          handle_(handle),
          pageSizeBefore_(singleText(handle, "PRAGMA cipher_default_page_size", Stage::run)) {
        set(std::to_string(format.cipherGeneration), std::to_string(format.pageSize));
    }
    ~AttachSettings() {
        try {
            set("4", pageSizeBefore_);
        } catch (const DatabaseError&) {
            // Whoever opens a file through this library sets both for it.
        }
    }
    AttachSettings(const AttachSettings&) = delete;

private:
    void set(const std::string& generation, const std::string& pageSize) {
        runPlain(handle_, "PRAGMA cipher_default_compatibility = " + generation, Stage::run);
        if (!pageSize.empty()) runPlain(handle_, "PRAGMA cipher_default_page_size = " + pageSize, Stage::run);
    }

    static inline tarvo::platform::Mutex mutex_;
    tarvo::platform::MutexLock lock_;
    sqlite3* handle_;
    std::string pageSizeBefore_;
};

}  // namespace kelva
