#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace kelva {

/// What a failure of the database means to the one who has to act on it.
enum class FailureKind {
    busy,          ///< locked by another connection or process; trying again may help
    full,          ///< disk full, or the file cannot grow
    corrupt,       ///< the file is damaged; it is never deleted by this library
    wrongKey,      ///< the passphrase does not open the file, or the file is not a database
    notEncrypted,  ///< a key was given and the file is plain, or would be: another SQLite answers in this process
    schema,        ///< no such table or column, or SQL that SQLite cannot parse
    constraint,    ///< a row breaks a rule of its table
    readOnly,      ///< no right to write the file, or a write inside `read`
    cannotOpen,    ///< folder or file is missing or not accessible
    misuse,        ///< a value that cannot be bound, a closed database, a write begun inside a read
    other
};

std::string_view failureKindName(FailureKind kind);

/// The one exception of this library. The message holds SQLite's words and never a bound value; the words of SQLite
/// about a statement may quote a name of it.
class DatabaseError : public std::runtime_error {
public:
    DatabaseError(FailureKind kind, int code, const std::string& message)
        : std::runtime_error(message), kind_(kind), code_(code) {}
    FailureKind kind() const { return kind_; }
    /// SQLite's extended result code, 0 when the failure is this library's own.
    int code() const { return code_; }

private:
    FailureKind kind_;
    int code_;
};

}  // namespace kelva
