#pragma once

#include <string>

#include "kelva_db/KelvaDatabase.h"
#include "kelva_db/internal/Sqlite.h"

struct sqlite3;

namespace kelva {

/// How a file is read: its page size, the generation of its encryption, and the key as SQLCipher takes it, with
/// which no connection has to derive anything.
struct FileFormat {
    static constexpr int usualPageSize = 4096;

    int pageSize = usualPageSize;
    int cipherGeneration = 0;  ///< 3 or 4; 0 for a plain file
    std::string key;           ///< x'key and salt in hex', empty for a plain file
    bool isNew = false;        ///< there was no file, or an empty one

    /// Finds how the file opens with this configuration, deriving the key once. Writes nothing, except that it undoes
    /// what a crash has left half written. Throws `wrongKey`, `notEncrypted`, `cannotOpen`, `corrupt` or `busy`.
    static FileFormat find(const std::string& path, const Configuration& configuration);

    /// Sets key and page size on a fresh connection.
    void applyTo(sqlite3* handle) const;
};

/// Runs internal statements that need no result; throws.
void runPlain(sqlite3* handle, const std::string& sql, Stage stage);
/// The first column of the first row as text, empty when there is none; throws.
std::string singleText(sqlite3* handle, const std::string& sql, Stage stage);

}  // namespace kelva
