#pragma once

#include <cstdint>
#include <string>

namespace kelva {

/// Whether a path names a database in memory.
bool isMemoryDatabase(const std::string& path);

/// The first 16 bytes of a file, fewer if it is shorter, and its size. Both are empty if there is no file.
struct FileBeginning {
    std::string head;
    std::uint64_t size = 0;
};
/// Reads how a file begins. It goes through SQLite's own file layer: closing a file by hand would drop the locks that
/// connections of this process hold on it.
FileBeginning beginningOf(const std::string& path);

/// Whether these bytes begin an unencrypted database.
bool isPlainHead(const std::string& head);

/// Makes the file if there is none, and keeps it and the files beside it from other users (mode 0600). SQLite gives the
/// mode of the database to the files that it makes beside it.
void keepToOwner(const std::string& path);

}  // namespace kelva
