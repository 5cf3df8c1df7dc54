#include "benchmarks/kelva/HandWritten.h"

#include <cstdio>
#include <cstdlib>

namespace kelva::benchmarks {

namespace {

constexpr int width = 256;

// The rows that are being inserted, as texts or as cells.
const HandWritten::Table* currentRows = nullptr;
const std::vector<HandWritten::View>* currentCells = nullptr;
std::size_t currentColumns = 0;

struct Cursor : sqlite3_vtab_cursor {
    std::size_t row;
};

int connect(sqlite3* handle, void*, int, const char* const*, sqlite3_vtab** out, char**) {
    std::string shape = "CREATE TABLE x(c0";
    for (int i = 1; i < width; ++i) shape += ",c" + std::to_string(i);
    *out = new sqlite3_vtab{};
    return sqlite3_declare_vtab(handle, (shape + ")").c_str());
}

int disconnect(sqlite3_vtab* table) {
    delete table;
    return SQLITE_OK;
}

int plan(sqlite3_vtab*, sqlite3_index_info*) { return SQLITE_OK; }

int open(sqlite3_vtab*, sqlite3_vtab_cursor** out) {
    *out = new Cursor{};
    return SQLITE_OK;
}

int close(sqlite3_vtab_cursor* cursor) {
    delete static_cast<Cursor*>(cursor);
    return SQLITE_OK;
}

int start(sqlite3_vtab_cursor* cursor, int, const char*, int, sqlite3_value**) {
    static_cast<Cursor*>(cursor)->row = 0;
    return SQLITE_OK;
}

int next(sqlite3_vtab_cursor* cursor) {
    ++static_cast<Cursor*>(cursor)->row;
    return SQLITE_OK;
}

int atEnd(sqlite3_vtab_cursor* cursor) {
    auto rowCount = currentRows ? currentRows->size() : currentCells->size() / currentColumns;
    return static_cast<Cursor*>(cursor)->row >= rowCount;
}

int column(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int number) {
    if (!currentRows) {
        auto row = static_cast<Cursor*>(cursor)->row;
        auto& cell = (*currentCells)[row * currentColumns + static_cast<std::size_t>(number)];
        if (cell.isNull)
            sqlite3_result_null(context);
        else if (cell.text)
            sqlite3_result_text(context, cell.text, static_cast<int>(cell.length), SQLITE_STATIC);
        else
            sqlite3_result_int64(context, cell.number);
        return SQLITE_OK;
    }
    auto& text = (*currentRows)[static_cast<Cursor*>(cursor)->row][static_cast<std::size_t>(number)];
    sqlite3_result_text(context, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    return SQLITE_OK;
}

int rowId(sqlite3_vtab_cursor* cursor, sqlite3_int64* out) {
    *out = static_cast<sqlite3_int64>(static_cast<Cursor*>(cursor)->row);
    return SQLITE_OK;
}

sqlite3_module makeModule() {
    sqlite3_module module{};
    module.xConnect = connect;
    module.xBestIndex = plan;
    module.xDisconnect = disconnect;
    module.xOpen = open;
    module.xClose = close;
    module.xFilter = start;
    module.xNext = next;
    module.xEof = atEnd;
    module.xColumn = column;
    module.xRowid = rowId;
    return module;
}

const sqlite3_module rowsModule = makeModule();

void require(bool done, sqlite3* handle) {
    if (done) return;
    std::fprintf(stderr, "hand-written SQLCipher failed: %s\n", sqlite3_errmsg(handle));
    std::abort();
}

}  // namespace

HandWritten::HandWritten(const std::string& path, const std::string& keyText) {
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    require(sqlite3_open_v2(path.c_str(), &handle_, flags, nullptr) == SQLITE_OK, handle_);
    run(("PRAGMA key = \"" + keyText + "\"").c_str());
    run("PRAGMA cipher_page_size = 4096; PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; PRAGMA foreign_keys = 1;"
        "PRAGMA cache_size = -65536; PRAGMA wal_autocheckpoint = 2000");
    require(sqlite3_create_module(handle_, "by_hand", &rowsModule, nullptr) == SQLITE_OK, handle_);
}

HandWritten::~HandWritten() { sqlite3_close(handle_); }

void HandWritten::run(const char* sql) {
    require(sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) == SQLITE_OK, handle_);
}

void HandWritten::insert(const std::string& table, const std::vector<std::string>& columns, const Table& rows) {
    currentRows = &rows;
    insertCurrent(table, columns);
}

void HandWritten::insert(const std::string& table, const std::vector<std::string>& columns,
                         const std::vector<View>& cells) {
    currentRows = nullptr;
    currentCells = &cells;
    currentColumns = columns.size();
    insertCurrent(table, columns);
}

void HandWritten::insertCurrent(const std::string& table, const std::vector<std::string>& columns) {
    std::string names, cells;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        names += (i ? "," : "") + columns[i];
        cells += (i ? ",c" : "c") + std::to_string(i);
    }
    run("BEGIN IMMEDIATE");
    run(("INSERT OR REPLACE INTO " + table + " (" + names + ") SELECT " + cells + " FROM by_hand").c_str());
    run("COMMIT");
}

HandWritten::Result HandWritten::fetch(const char* sql) {
    Result result;
    sqlite3_stmt* statement = nullptr;
    require(sqlite3_prepare_v2(handle_, sql, -1, &statement, nullptr) == SQLITE_OK, handle_);
    auto count = sqlite3_column_count(statement);
    while (sqlite3_step(statement) == SQLITE_ROW) {
        for (int i = 0; i < count; ++i) {
            auto type = sqlite3_column_type(statement, i);
            if (type == SQLITE_INTEGER) {
                result.cells.push_back({type, sqlite3_column_int64(statement, i), 0, 0});
            } else if (type == SQLITE_NULL) {
                result.cells.push_back({type, 0, 0, 0});
            } else {
                auto text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
                auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement, i));
                result.cells.push_back({type, 0, result.texts.size(), length});
                result.texts.append(text, length);
            }
        }
    }
    sqlite3_finalize(statement);
    return result;
}

}  // namespace kelva::benchmarks
