#include "kelva_db/internal/FileFormat.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <sqlite3.h>

#include <algorithm>

#include "kelva_db/internal/ClockVfs.h"
#include "kelva_db/internal/DatabaseFile.h"
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
    return derivedKey(configuration.key()->text(), salt, generation);
}

/// Whether the file can be read so.
bool isReadable(const std::string& path, const FileFormat& format, int busyTimeout, int flags) {
    auto handle = openHandle(path, flags);
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

/// The same, opened for reading alone, so that nothing of the file changes if it cannot be read. Only what a crash in
/// the middle of a write has left is brought to its end, which needs the right to write and holds for every key: the
/// pages that the journal puts back are those of the file.
bool opens(const std::string& path, const FileFormat& format, int busyTimeout) {
    try {
        return isReadable(path, format, busyTimeout, SQLITE_OPEN_READONLY);
    } catch (const DatabaseError& error) {
        if (error.kind() != FailureKind::readOnly) throw;
    }
    return isReadable(path, format, busyTimeout, SQLITE_OPEN_READWRITE);
}

/// A key can be wrong only for a file that may be a database.
void refuseDamaged(const std::string& head, std::uint64_t size) {
    constexpr std::uint64_t smallestPage = 512;
    if (size == 0) return;
    if (size < smallestPage)
        throwError(FailureKind::corrupt, "the file is too short for a database: " + std::to_string(size) + " bytes");
    if (std::all_of(head.begin(), head.end(), [](char byte) { return byte == 0; }))
        throwError(FailureKind::corrupt, "the file is damaged: it begins with zeros");
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
               "the key does not open this file: it is wrong, or the file is damaged or is not a database");
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
    auto [head, size] = beginningOf(path);
    refuseDamaged(head, size);
    if (!keyed) {
        if (!head.empty() && !isPlainHead(head))
            throwError(FailureKind::wrongKey, "no key was given, and the file is encrypted or is not a database");
        return {usualPageSize, 0, {}, head.empty()};
    }
    if (isPlainHead(head)) throwError(FailureKind::notEncrypted, "a key was given, but the file is not encrypted");
    if (head.empty()) return newFile(configuration, generation);
    return existingFile(path, configuration, head, generation);
}

}  // namespace kelva
