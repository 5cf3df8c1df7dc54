#include "kelva_db/DatabaseError.h"

#include <sqlite3.h>

#include "kelva_db/internal/Sqlite.h"

namespace kelva {

std::string_view failureKindName(FailureKind kind) {
    switch (kind) {
        case FailureKind::busy:
            return "busy";
        case FailureKind::full:
            return "full";
        case FailureKind::corrupt:
            return "corrupt";
        case FailureKind::wrongKey:
            return "wrongKey";
        case FailureKind::notEncrypted:
            return "notEncrypted";
        case FailureKind::schema:
            return "schema";
        case FailureKind::constraint:
            return "constraint";
        case FailureKind::readOnly:
            return "readOnly";
        case FailureKind::cannotOpen:
            return "cannotOpen";
        case FailureKind::misuse:
            return "misuse";
        case FailureKind::other:
            break;
    }
    return "other";
}

namespace {

FailureKind classifyGeneralError(Stage stage, const std::string& message) {
    // A kept statement is prepared again while it runs when the schema has changed, and fails then with these words.
    bool namesSchema = message.starts_with("no such ") || message.find(" has no column named ") != std::string::npos;
    return stage == Stage::prepare || namesSchema ? FailureKind::schema : FailureKind::other;
}

/// SQLite quotes the token that it stumbled over, which may be a literal, and full-text search quotes its pattern.
std::string withoutQuotedValues(std::string message) {
    if (auto literal = message.find("\"'"); literal != std::string::npos) {
        auto end = message.rfind('"');
        message.replace(literal + 1, end > literal ? end - literal - 1 : std::string::npos, "...");
    }
    if (auto pattern = message.find("expression: ["); pattern != std::string::npos) message.resize(pattern + 10);
    return message;
}

}  // namespace

FailureKind classify(int code, Stage stage, const std::string& message) {
    switch (code & 0xff) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
        case SQLITE_PROTOCOL:
            return FailureKind::busy;
        case SQLITE_FULL:
            return FailureKind::full;
        case SQLITE_CORRUPT:
            return FailureKind::corrupt;
        case SQLITE_NOTADB:
            return FailureKind::wrongKey;
        case SQLITE_SCHEMA:
            return FailureKind::schema;
        case SQLITE_CONSTRAINT:
        case SQLITE_MISMATCH:
            return FailureKind::constraint;
        case SQLITE_READONLY:
            return FailureKind::readOnly;
        case SQLITE_CANTOPEN:
        case SQLITE_PERM:
            return FailureKind::cannotOpen;
        case SQLITE_MISUSE:
        case SQLITE_RANGE:
        case SQLITE_TOOBIG:
        case SQLITE_AUTH:
            return FailureKind::misuse;
        case SQLITE_ERROR:
            return classifyGeneralError(stage, message);
        default:
            return FailureKind::other;
    }
}

void throwLastError(sqlite3* handle, Stage stage) {
    auto code = sqlite3_extended_errcode(handle);
    std::string message = sqlite3_errmsg(handle);
    auto kind = classify(code, stage, message);
    if (kind == FailureKind::misuse && (code & 0xff) == SQLITE_AUTH)
        message = "transactions are begun and ended by the library alone, not by a statement";
    throw DatabaseError(kind, code, withoutQuotedValues(std::move(message)));
}

void throwError(FailureKind kind, const std::string& message) { throw DatabaseError(kind, 0, message); }

}  // namespace kelva
