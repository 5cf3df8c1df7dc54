#include "kelva_db/internal/Connection.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>

#include "kelva_db/internal/AttachSettings.h"
#include "kelva_db/internal/ClockVfs.h"
#include "kelva_db/internal/DatabaseFile.h"
#include "kelva_db/internal/Execution.h"
#include "kelva_db/internal/Sql.h"
#include "kelva_db/internal/Sqlite.h"
#include "kelva_db/internal/StatementArguments.h"
#include "platform/Text.h"

namespace kelva {

namespace {

// The writer's cache holds the pages of a large transaction, so that they reach the log once; negative means KiB.
constexpr const char* writerCache = "PRAGMA cache_size = -65536";
constexpr const char* readerCache = "PRAGMA cache_size = -16384";

// A log of 8 MB is copied into the file; copying more often syncs more often, a longer log slows every read. After a
// long write the log is cut to 64 MB.
constexpr int largeLogPages = 2000;
constexpr const char* logSizeLimit = "PRAGMA journal_size_limit = 67108864";

// Databases in memory are known by a URI, also to ATTACH.
int openFlags(Connection::Role role) {
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_URI;
    return role == Connection::Role::reader ? flags : flags | SQLITE_OPEN_CREATE;
}

/// A path as SQLite takes it: the name of a file is never read as a URI.
std::string nameForSqlite(const std::string& path) {
    return path.starts_with("file:") && !isMemoryDatabase(path) ? "./" + path : path;
}

sqlite3* openFile(const std::string& path, Connection::Role role) {
    sqlite3* handle = nullptr;
    if (sqlite3_open_v2(nameForSqlite(path).c_str(), &handle, openFlags(role), clockVfsName()) == SQLITE_OK)
        return handle;
    std::unique_ptr<sqlite3, int (*)(sqlite3*)> failed(handle, sqlite3_close);
    throwLastError(handle, Stage::open);
}

/// Returns the journal mode in force. Of two connections that change a new file at the same time each holds what the
/// other one waits for; SQLite then answers "busy" at once instead of waiting, so this function waits.
std::string changeToLog(sqlite3* handle, int busyTimeout) {
    using Time = std::chrono::steady_clock;
    constexpr int pause = 10;
    auto end = Time::now() + std::chrono::milliseconds(busyTimeout);
    for (;;) {
        try {
            return singleText(handle, "PRAGMA journal_mode = WAL", Stage::open);
        } catch (const DatabaseError& error) {
            if (error.kind() != FailureKind::busy || Time::now() >= end) throw;
        }
        sqlite3_sleep(pause);
    }
}

}  // namespace

void Connection::Close::operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }

Connection::Connection(const std::string& path, const FileFormat& format, Role role, int busyTimeout,
                       ChangeTracker* tracker)
    : handle_(openFile(path, role)), statements_(handle_.get()), database_(*this), tracker_(tracker) {
    sqlite3_extended_result_codes(handle(), 1);
    setBusyTimeout(busyTimeout);
    if (role != Role::memory) format.applyTo(handle());
    configure(role, busyTimeout);
    listTables_.registerWith(handle());
    installHooks();
}

Connection::~Connection() = default;

void Connection::configure(Role role, int busyTimeout) {
    sqlite3_wal_autocheckpoint(handle(), 0);
    runPlain(handle(), "PRAGMA foreign_keys = 1", Stage::open);
    if (role == Role::memory) return;
    runPlain(handle(), "PRAGMA synchronous = FULL", Stage::open);
    if (role == Role::reader) {
        runPlain(handle(), readerCache, Stage::open);
        runPlain(handle(), "PRAGMA query_only = 1", Stage::open);
        return;
    }
    if (changeToLog(handle(), busyTimeout) != "wal")
        throwError(FailureKind::cannotOpen, "the folder of the database does not allow a write-ahead log");
    runPlain(handle(), writerCache, Stage::open);
    runPlain(handle(), logSizeLimit, Stage::open);
}

void Connection::installHooks() {
    sqlite3_set_authorizer(
        handle(),
        [](void* self, int action, const char* first, const char* second, const char*, const char*) {
            return static_cast<Connection*>(self)->authorize(action, first, second);
        },
        this);
    sqlite3_wal_hook(
        handle(),
        [](void* self, sqlite3*, const char* databaseName, int pages) {
            if (std::string_view(databaseName) == "main") static_cast<Connection*>(self)->pagesInLog_ = pages;
            return SQLITE_OK;
        },
        this);
}

int Connection::authorize(int action, const char* first, const char* second) {
    if (untrusted_ && !internal_)
        if (auto answer = untrusted_->authorize(action, first, second); answer != SQLITE_OK) return answer;
    switch (action) {
        case SQLITE_TRANSACTION:
        case SQLITE_SAVEPOINT:
            return internal_ ? SQLITE_OK : SQLITE_DENY;
        case SQLITE_DROP_TABLE:
        case SQLITE_DROP_TEMP_TABLE:
        case SQLITE_DROP_VTABLE:
        case SQLITE_DROP_VIEW:
        case SQLITE_DROP_TEMP_VIEW:
            dropped_ = first ? first : "";
            return SQLITE_OK;
        case SQLITE_DELETE:
            return authorizeDelete(first ? first : "");
        default:
            return SQLITE_OK;
    }
}

// "Ignore" makes a DELETE without WHERE go row by row, of which the observers are notified; the removal of a table and
// of its entries in the schema would not happen at all.
int Connection::authorizeDelete(std::string_view table) {
    bool removal = table == dropped_ || table.starts_with("sqlite_");
    if (table == dropped_) dropped_.clear();
    return watched_ && !removal ? SQLITE_IGNORE : SQLITE_OK;
}

void Connection::setBusyTimeout(int milliseconds) { sqlite3_busy_timeout(handle(), milliseconds); }

std::size_t Connection::parameterLimit() const {
    return static_cast<std::size_t>(sqlite3_limit(handle(), SQLITE_LIMIT_VARIABLE_NUMBER, -1));
}

void Connection::checkUsable() const {
    if (lost_) throw *lost_;
}

/// Disk full and the like make SQLite end the transaction. What follows in the block must not run outside of one.
void Connection::noteFailure() {
    if (!inTransaction_ || lost_ || !sqlite3_get_autocommit(handle())) return;
    auto code = sqlite3_extended_errcode(handle());
    std::string message = sqlite3_errmsg(handle());
    auto kind = classify(code, Stage::run, message);
    lost_.emplace(kind, code, "the transaction was ended by a failure: " + message);
}

void Connection::execute(std::string_view sql, std::span<const Value> parameters) {
    StatementArguments arguments(sql, parameters, parameterLimit());
    Lending lending(listTables_, arguments.lists());
    auto bound = arguments.bound();
    for (auto rest = arguments.sql(); !rest.empty();) {
        Execution execution(*this, rest, rest);
        if (execution.parameterCount() > 0) {
            execution.bind(bound);
            bound = {};
        }
        execution.runToEnd();
    }
    if (!bound.empty()) throwError(FailureKind::misuse, "parameters were given for a statement without placeholders");
}

namespace {

/// What follows the first statement of a text, when SQLite has not prepared it.
std::string_view afterRefused(std::string_view sql, const std::string& kind) {
    // A trigger holds statements of its own, which must not be taken for statements of the text.
    if (kind == "trigger") return {};
    SqlScanner scanner(sql);
    for (auto token = scanner.next(); token.kind != SqlToken::Kind::end; token = scanner.next())
        if (token.is(';')) return sql.substr(static_cast<std::size_t>(token.text.data() - sql.data()) + 1);
    return {};
}

}  // namespace

/// Runs the first statement of a text unless it is refused. Returns what follows it.
std::string_view Connection::runUntrusted(std::string_view sql, UntrustedSql& bounds) {
    if (bounds.refusesUnasked(sql)) return afterRefused(sql, bounds.refused());
    std::string_view rest;
    try {
        Execution execution(*this, sql, rest);
        if (execution.parameterCount() > 0) throwError(FailureKind::misuse, "a statement from outside has parameters");
        if (execution.givesRows())
            bounds.refuse("query");
        else
            execution.runToEnd();
        return rest;
    } catch (const DatabaseError& error) {
        if (bounds.isOverdue())
            throwError(FailureKind::other, "a statement from outside was stopped at its time limit");
        bool wantsSchema = std::string_view(error.what()).ends_with("may not be modified");
        if (wantsSchema) bounds.refuse("write to the schema");
        if (bounds.refused().empty()) throw;
        return afterRefused(sql, bounds.refused());
    }
}

/// Puts bounds in force. Kept statements were prepared without them, and those of a text from outside are not kept.
class Connection::UntrustedScope {
public:
    UntrustedScope(Connection& connection, UntrustedSql& bounds) : connection_(connection) {
        connection.statements_.clear();
        connection.untrusted_ = &bounds;
    }
    ~UntrustedScope() {
        connection_.untrusted_ = nullptr;
        connection_.statements_.clear();
    }
    UntrustedScope(const UntrustedScope&) = delete;

private:
    Connection& connection_;
};

std::vector<std::string> Connection::executeUntrusted(std::string_view sql, std::chrono::milliseconds timeLimit) {
    UntrustedSql bounds(handle(), timeLimit);
    UntrustedScope scope(*this, bounds);
    std::vector<std::string> refused;
    for (auto rest = sql; !rest.empty();) {
        bounds.beginStatement();
        rest = runUntrusted(rest, bounds);
        if (!bounds.refused().empty()) refused.push_back(bounds.refused());
    }
    return refused;
}

Rows Connection::query(std::string_view sql, std::span<const Value> parameters) {
    StatementArguments arguments(sql, parameters, parameterLimit());
    Lending lending(listTables_, arguments.lists());
    std::string_view rest;
    Execution execution(*this, arguments.sql(), rest);
    if (!rest.empty()) throwError(FailureKind::misuse, "a query is one statement");
    execution.bind(arguments.bound());
    return execution.allRows();
}

void Connection::insertBatch(const std::string& sql, const RowSource& rows) {
    Lending lending(listTables_, rows);
    std::string_view rest;
    Execution execution(*this, sql, rest);
    execution.runToEnd();
}

std::string Connection::schemaVersions() {
    std::string versions;
    auto add = [&](const std::string& name) {
        // Asked with every write, so that the statement is kept.
        auto version = query("PRAGMA " + name + ".schema_version", {});
        versions += name + std::to_string(version.empty() ? 0 : version.front().cell(0).asInteger().value_or(0)) + "/";
    };
    add("main");
    add("temp");
    for (auto& [name, format] : attached_) add(quotedColumn(name));
    return versions;
}

// The pragma that lists columns looks at the schema that this connection has read, and a kept one at that of its first
// run: a table that another connection has made since would have no columns. Any query reads a changed schema again.
void Connection::noticeSchema() {
    statements_.clear();
    singleText(handle(), "SELECT count(*) FROM main.sqlite_master WHERE 0", Stage::run);
    for (auto& [name, format] : attached_)
        singleText(handle(), "SELECT count(*) FROM " + quotedColumn(name) + ".sqlite_master WHERE 0", Stage::run);
}

/// Inside a transaction nobody else changes the schema that it sees, and statements of its own that may are noted.
void Connection::checkShapes() {
    if (inTransaction_ && isSchemaChecked_) return;
    if (auto versions = schemaVersions(); versions != shapesVersion_) {
        shapes_.clear();
        shapesVersion_ = std::move(versions);
        noticeSchema();
    }
    isSchemaChecked_ = true;
}

void Connection::noteStatement(std::string_view sql) {
    constexpr std::string_view harmless[] = {"SELECT ", "INSERT ", "UPDATE ", "DELETE ", "PRAGMA "};
    if (!isSchemaChecked_) return;
    auto startsWith = [&](auto& word) {
        return tarvo::text::equalsIgnoringAsciiCase(sql.substr(0, word.size()), word);
    };
    isSchemaChecked_ = std::any_of(std::begin(harmless), std::end(harmless), startsWith);
}

const Connection::Shape& Connection::shapeOf(std::string_view table) {
    checkUsable();
    checkShapes();
    if (auto known = shapes_.find(table); known != shapes_.end()) return known->second;
    auto dot = table.find('.');
    auto prefix = dot == std::string_view::npos ? "" : quotedColumn(table.substr(0, dot)) + ".";
    auto bare = dot == std::string_view::npos ? table : table.substr(dot + 1);
    Shape shape;
    auto rows = query("PRAGMA " + prefix + "table_info(" + quotedColumn(bare) + ")", {});
    for (auto row : rows) {
        shape.columns.emplace_back(row.find("name")->asText().value_or(""));
        shape.hasDefaults = shape.hasDefaults || !row.find("dflt_value")->isNull();
    }
    return shapes_.emplace(std::string(table), std::move(shape)).first->second;
}

// The schema's version goes back with what is undone, and the next change of the schema takes the same number again.
void Connection::forgetShapes() noexcept {
    shapes_.clear();
    shapesVersion_.clear();
    isSchemaChecked_ = false;
}

void Connection::runInternal(const char* sql) {
    // Not through the kept statements, where a text from outside would find it prepared.
    internal_ = true;
    auto code = sqlite3_exec(handle(), sql, nullptr, nullptr, nullptr);
    internal_ = false;
    if (code == SQLITE_OK) return;
    noteFailure();
    throwLastError(handle(), Stage::run);
}

void Connection::begin(bool immediate) {
    if (tracker_) {
        tracker_->begin();
        bool watching = tracker_->watching();
        if (watching != watched_) {
            // Whether a DELETE without WHERE goes row by row is settled when it is prepared.
            statements_.clear();
            watched_ = watching;
            auto hook = [](void* tracker, int operation, const char* databaseName, const char* table,
                           sqlite3_int64 row) {
                auto event = operation == SQLITE_INSERT   ? DatabaseEvent::insert
                             : operation == SQLITE_UPDATE ? DatabaseEvent::update
                                                          : DatabaseEvent::delete_;
                static_cast<ChangeTracker*>(tracker)->note(event, databaseName, table, row);
            };
            sqlite3_update_hook(handle(), watching ? +hook : nullptr, tracker_);
        }
    }
    runInternal(immediate ? "BEGIN IMMEDIATE" : "BEGIN");
    inTransaction_ = true;
    isSchemaChecked_ = false;
}

void Connection::commit() {
    checkUsable();
    runInternal("COMMIT");
    inTransaction_ = false;
}

void Connection::rollback() noexcept {
    forgetShapes();
    endRead();
}

void Connection::endRead() noexcept {
    lost_.reset();
    inTransaction_ = false;
    if (sqlite3_get_autocommit(handle())) return;
    internal_ = true;
    sqlite3_exec(handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    internal_ = false;
}

void Connection::inSavepoint(tarvo::platform::FunctionRef<void()> block) {
    // Outside a transaction that SQLite has ended by itself, a savepoint would begin a new one.
    checkUsable();
    auto mark = tracker_ ? tracker_->mark() : 0;
    runInternal("SAVEPOINT kelva");
    try {
        block();
    } catch (...) {
        if (!lost_) {
            runInternal("ROLLBACK TO kelva");
            runInternal("RELEASE kelva");
        }
        forgetShapes();
        if (tracker_) tracker_->forgetSince(mark);
        throw;
    }
    runInternal("RELEASE kelva");
}

void Connection::attach(const Attachment& attachment) {
    auto& format = attachment.format;
    std::optional<AttachSettings> settings;
    if (!format.key.empty()) settings.emplace(handle(), format);
    auto words = "ATTACH " + literal(nameForSqlite(attachment.path)) + " AS " + quotedColumn(attachment.name);
    runPlain(handle(), words + " KEY \"" + format.key + "\"", Stage::run);
    attached_[attachment.name] = format;
}

void Connection::detach(const std::string& name) {
    statements_.clear();
    runPlain(handle(), "DETACH " + quotedColumn(name), Stage::run);
    attached_.erase(name);
}

void Connection::checkpoint() noexcept {
    // Waits for nobody, as another process may read for as long as it likes: what it still needs stays in the log.
    setBusyTimeout(0);
    sqlite3_wal_checkpoint_v2(handle(), nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
}

void Connection::checkpointWhenLarge() noexcept {
    if (pagesInLog_ < largeLogPages) return;
    // Waits for nobody: pages that a reader still needs stay for the next time.
    sqlite3_wal_checkpoint_v2(handle(), "main", SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
    pagesInLog_ = 0;
}

}  // namespace kelva
