#include "kelva_db/internal/UntrustedSql.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>

#include "kelva_db/internal/Sql.h"
#include "platform/Text.h"

namespace kelva {

namespace {

// Between two looks at the clock: some hundred microseconds at most.
constexpr int stepsBetweenLooks = 10'000;
// Far above any default or name that a table is made with. One function call on longer texts could take minutes, and no
// limit of time ends it.
constexpr int longestValue = 1 << 20, longestPattern = 100;

// The functions of SQLite, SQLCipher and the usual shells that read or write files, load code or take the address of
// some.
constexpr std::array<std::string_view, 8> refusedFunctions = {
    "load_extension", "fts3_tokenizer", "sqlcipher_export", "readfile", "writefile", "edit", "writeblob", "fts5"};

std::string_view kindOf(int action) {
    switch (action) {
        case SQLITE_PRAGMA:
            return "PRAGMA";
        case SQLITE_ATTACH:
            return "ATTACH";
        case SQLITE_DETACH:
            return "DETACH";
        case SQLITE_TRANSACTION:
        case SQLITE_SAVEPOINT:
            return "transaction";
        case SQLITE_CREATE_TRIGGER:
        case SQLITE_CREATE_TEMP_TRIGGER:
        case SQLITE_DROP_TRIGGER:
        case SQLITE_DROP_TEMP_TRIGGER:
            return "trigger";
        case SQLITE_CREATE_VIEW:
        case SQLITE_CREATE_TEMP_VIEW:
        case SQLITE_DROP_VIEW:
        case SQLITE_DROP_TEMP_VIEW:
            return "view";
        case SQLITE_CREATE_VTABLE:
        case SQLITE_DROP_VTABLE:
            return "virtual table";
        case SQLITE_FUNCTION:
            return "function";
        case SQLITE_RECURSIVE:
            return "recursive query";
        default:
            return "statement";
    }
}

bool isOfTables(int action) {
    switch (action) {
        case SQLITE_CREATE_TABLE:
        case SQLITE_CREATE_INDEX:
        case SQLITE_DROP_TABLE:
        case SQLITE_DROP_INDEX:
        case SQLITE_ALTER_TABLE:
        case SQLITE_REINDEX:
        case SQLITE_INSERT:
        case SQLITE_UPDATE:
        case SQLITE_DELETE:
        case SQLITE_READ:
        case SQLITE_SELECT:
            return true;
        default:
            return false;
    }
}

bool isHarmlessFunction(const char* name) {
    auto lower = tarvo::text::asciiLowercase(name ? name : "");
    return std::find(refusedFunctions.begin(), refusedFunctions.end(), lower) == refusedFunctions.end();
}

}  // namespace

UntrustedSql::UntrustedSql(sqlite3* handle, std::chrono::milliseconds timeLimit)
    : handle_(handle),
      timeLimit_(timeLimit),
      lengthBefore_(sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, longestValue)),
      patternLengthBefore_(sqlite3_limit(handle, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, longestPattern)) {
    beginStatement();
    sqlite3_progress_handler(handle_, stepsBetweenLooks, &UntrustedSql::progress, this);
}

UntrustedSql::~UntrustedSql() {
    sqlite3_progress_handler(handle_, 0, nullptr, nullptr);
    sqlite3_limit(handle_, SQLITE_LIMIT_LENGTH, lengthBefore_);
    sqlite3_limit(handle_, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, patternLengthBefore_);
}

int UntrustedSql::progress(void* self) {
    auto& bounds = *static_cast<UntrustedSql*>(self);
    bounds.isOverdue_ = tarvo::platform::Clock::steadyNow() - bounds.began_ > bounds.timeLimit_;
    return bounds.isOverdue_ ? 1 : 0;
}

void UntrustedSql::beginStatement() {
    refused_.clear();
    isOverdue_ = false;
    began_ = tarvo::platform::Clock::steadyNow();
}

int UntrustedSql::authorize(int action, const char*, const char* second) {
    bool isAllowed = action == SQLITE_FUNCTION ? isHarmlessFunction(second) : isOfTables(action);
    if (isAllowed) return SQLITE_OK;
    refuse(kindOf(action));
    return SQLITE_DENY;
}

bool UntrustedSql::refusesUnasked(std::string_view sql) {
    SqlScanner scanner(sql);
    auto first = scanner.nextSignificant();
    while (first.is(';')) first = scanner.nextSignificant();
    bool isVacuum = first.kind == SqlToken::Kind::word && tarvo::text::equalsIgnoringAsciiCase(first.text, "VACUUM");
    if (isVacuum) refuse("VACUUM");
    return isVacuum;
}

void UntrustedSql::refuse(std::string_view kind) {
    if (refused_.empty()) refused_ = kind;
}

}  // namespace kelva
