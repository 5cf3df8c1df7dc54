#include "kelva_db/internal/FileFormat.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <sqlite3.h>

#include <filesystem>
#include <vector>

#include "kelva_db/internal/ClockVfs.h"
#include "platform/Random.h"
#include "platform/Text.h"

namespace kelva {

namespace {

constexpr std::size_t keyBytes = 32, saltBytes = 16;

struct CloseHandle {
    void operator()(sqlite3* handle) const { sqlite3_close(handle); }
};
using Handle = std::unique_ptr<sqlite3, CloseHandle>;

Handle openHandle(const std::string& path, int flags) {
    sqlite3* handle = nullptr;
    auto code = sqlite3_open_v2(path.c_str(), &handle, flags | SQLITE_OPEN_NOMUTEX, clockVfsName());
    Handle owned(handle);
    if (!handle) throwError(FailureKind::other, "no memory to open a database");
    sqlite3_extended_result_codes(handle, 1);
    if (code != SQLITE_OK) throwLastError(handle, Stage::open);
    return owned;
}

/// The generation of encryption that the library in this process writes. Asked without touching any file.
int generationOfLibrary() {
    auto handle = openHandle(":memory:", SQLITE_OPEN_READWRITE);
    auto version = singleText(handle.get(), "PRAGMA cipher_version", Stage::open);
    if (version.empty())
        throwError(FailureKind::notEncrypted,
                   "a key was given, but the SQLite that answers in this process cannot encrypt; link SQLCipher first");
    // Newer ones write every failed try of a key to standard error; this library reports failures by itself.
    runPlain(handle.get(), "PRAGMA cipher_log_level = NONE", Stage::open);
    return version.starts_with("3") || version.starts_with("2") ? 3 : 4;
}

std::string keyText(const std::string& key, const std::string& salt) {
    return "x'" + tarvo::text::hex(key) + tarvo::text::hex(salt) + "'";
}

/// Derives as SQLCipher does for a file of this generation.
std::string derivedKey(const std::string& passphrase, const std::string& salt, int generation) {
    std::string key(keyBytes, '\0');
    bool old = generation == 3;
    auto done = PKCS5_PBKDF2_HMAC(passphrase.data(), static_cast<int>(passphrase.size()),
                                  reinterpret_cast<const unsigned char*>(salt.data()), static_cast<int>(salt.size()),
                                  old ? 64000 : 256000, old ? EVP_sha1() : EVP_sha512(), static_cast<int>(key.size()),
                                  reinterpret_cast<unsigned char*>(key.data()));
    if (done != 1) throwError(FailureKind::other, "the key could not be derived");
    auto text = keyText(key, salt);
    OPENSSL_cleanse(key.data(), key.size());
    return text;
}

std::string keyFor(const Configuration& configuration, const std::string& salt, int generation) {
    if (auto& raw = configuration.rawKey()) return keyText(raw->first, salt);
    return derivedKey(*configuration.key(), salt, generation);
}

/// Whether the file can be read so. Opened for reading alone, so that nothing of it changes when it cannot.
bool opens(const std::string& path, const FileFormat& format, int busyTimeout) {
    auto handle = openHandle(path, SQLITE_OPEN_READONLY);
    sqlite3_busy_timeout(handle.get(), busyTimeout);
    format.applyTo(handle.get());
    try {
        singleText(handle.get(), "SELECT count(*) FROM sqlite_master", Stage::open);
        return true;
    } catch (const DatabaseError& error) {
        // A wrong page size looks like a wrong key.
        if (error.kind() != FailureKind::wrongKey) throw;
        return false;
    }
}

FileFormat newFile(const Configuration& configuration, int generation) {
    auto salt = configuration.rawKey() ? configuration.rawKey()->second : tarvo::platform::Random::bytes(saltBytes);
    return {FileFormat::usualPageSize, generation, keyFor(configuration, salt, generation), true};
}

FileFormat existingFile(const std::string& path, const Configuration& configuration, const std::string& salt,
                        int newestGeneration) {
    // Most likely first: this library's size, the defaults of the two generations, then what somebody may have chosen.
    static constexpr int pageSizes[] = {FileFormat::usualPageSize, 1024, 2048, 8192, 16384, 32768, 65536, 512};
    for (int generation = newestGeneration; generation >= 3; --generation) {
        FileFormat format{0, generation, keyFor(configuration, salt, generation)};
        for (auto pageSize : pageSizes) {
            format.pageSize = pageSize;
            if (opens(path, format, configuration.busyTimeout)) return format;
        }
    }
    throwError(FailureKind::wrongKey,
               "the key does not open this file: it is wrong, or the file is damaged or no database");
}

}  // namespace

void runPlain(sqlite3* handle, const std::string& sql, Stage stage) {
    if (sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) throwLastError(handle, stage);
}

std::string singleText(sqlite3* handle, const std::string& sql, Stage stage) {
    std::string text;
    auto takeFirst = [](void* out, int count, char** texts, char**) {
        auto& first = *static_cast<std::string*>(out);
        if (count > 0 && texts[0] && first.empty()) first = texts[0];
        return 0;
    };
    if (sqlite3_exec(handle, sql.c_str(), takeFirst, &text, nullptr) != SQLITE_OK) throwLastError(handle, stage);
    return text;
}

bool isMemoryDatabase(const std::string& path) {
    if (path == ":memory:") return true;
    return path.starts_with("file:") &&
           (path.find(":memory:") != std::string::npos || path.find("mode=memory") != std::string::npos);
}

std::string headOfFile(const std::string& path) {
    auto vfs = sqlite3_vfs_find(clockVfsName());
    // SQLite hands absolute names to its file layer, and this one leaves the name to live as long as the file.
    std::string full(static_cast<std::size_t>(vfs->mxPathname) + 1, '\0');
    int exists = 0;
    if (vfs->xFullPathname(vfs, path.c_str(), vfs->mxPathname + 1, full.data()) != SQLITE_OK ||
        vfs->xAccess(vfs, full.c_str(), SQLITE_ACCESS_EXISTS, &exists) != SQLITE_OK || !exists)
        return {};
    std::vector<std::max_align_t> memory(static_cast<std::size_t>(vfs->szOsFile) / sizeof(std::max_align_t) + 1);
    auto file = reinterpret_cast<sqlite3_file*>(memory.data());
    if (vfs->xOpen(vfs, full.c_str(), file, SQLITE_OPEN_READONLY | SQLITE_OPEN_MAIN_DB, nullptr) != SQLITE_OK)
        throwError(FailureKind::cannotOpen, "the database file cannot be opened");
    sqlite3_int64 size = 0;
    std::string head(saltBytes, '\0');
    bool read = file->pMethods->xFileSize(file, &size) == SQLITE_OK;
    head.resize(std::min<std::size_t>(head.size(), static_cast<std::size_t>(size)));
    read = read &&
           (head.empty() || file->pMethods->xRead(file, head.data(), static_cast<int>(head.size()), 0) == SQLITE_OK);
    file->pMethods->xClose(file);
    if (!read) throwError(FailureKind::cannotOpen, "the database file cannot be read");
    return head;
}

bool isPlainHead(const std::string& head) { return head.starts_with("SQLite format 3"); }

void FileFormat::applyTo(sqlite3* handle) const {
    if (key.empty()) return runPlain(handle, "PRAGMA page_size = " + std::to_string(pageSize), Stage::open);
    runPlain(handle, "PRAGMA key = \"" + key + "\"", Stage::open);
    // A library of the older generation does not know the setting and ignores it.
    runPlain(handle, "PRAGMA cipher_compatibility = " + std::to_string(cipherGeneration), Stage::open);
    runPlain(handle, "PRAGMA cipher_page_size = " + std::to_string(pageSize), Stage::open);
}

FileFormat FileFormat::find(const std::string& path, const Configuration& configuration) {
    if (isMemoryDatabase(path)) return {};
    bool keyed = configuration.key() || configuration.rawKey();
    auto generation = keyed ? generationOfLibrary() : 0;
    auto head = headOfFile(path);
    if (!keyed) {
        if (!head.empty() && !isPlainHead(head))
            throwError(FailureKind::wrongKey, "no key was given, and the file is encrypted or no database");
        return {usualPageSize, 0, {}, head.empty()};
    }
    if (isPlainHead(head)) throwError(FailureKind::notEncrypted, "a key was given, but the file is not encrypted");
    if (head.empty()) return newFile(configuration, generation);
    if (head.size() < saltBytes) throwError(FailureKind::wrongKey, "the file is too short for a database");
    return existingFile(path, configuration, head, generation);
}

}  // namespace kelva
