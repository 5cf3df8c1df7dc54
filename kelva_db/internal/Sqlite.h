#pragma once

#include <string>

#include "kelva_db/DatabaseError.h"

struct sqlite3;

namespace kelva {

/// Where a failure came from: SQLite answers its general code both for SQL that it cannot parse and for failures of
/// a running statement.
enum class Stage { open, prepare, run };

/// The meaning of an extended result code.
FailureKind classify(int code, Stage stage, const std::string& message);

/// Throws what the connection last failed with. The message keeps SQLite's words and leaves out texts that it quotes
/// from literals or bound values.
[[noreturn]] void throwLastError(sqlite3* handle, Stage stage);
[[noreturn]] void throwError(FailureKind kind, const std::string& message);

}  // namespace kelva
