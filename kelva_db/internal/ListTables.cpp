#include "kelva_db/internal/ListTables.h"

#include <sqlite3.h>

#include <array>
#include <memory>
#include <new>

#include "kelva_db/internal/Sql.h"
#include "kelva_db/internal/Sqlite.h"

namespace kelva {

namespace {

// Declaring a table takes time that grows with the square of its columns, so narrow batches get a narrow table.
constexpr std::array<int, 4> widths = {16, 64, 256, 2000};

constexpr double oneRow = 1, everyRow = 1e6, unusable = 1e99;

struct Table : sqlite3_vtab {
    explicit Table(ListTables& owner) : sqlite3_vtab{}, lists(owner) {}
    ListTables& lists;
};

/// Connects a table of the given shape to the connection's lists.
int connect(sqlite3* handle, void* lists, const std::string& shape, sqlite3_vtab** out) {
    auto code = sqlite3_declare_vtab(handle, shape.c_str());
    if (code != SQLITE_OK) return code;
    *out = new (std::nothrow) Table(*static_cast<ListTables*>(lists));
    return *out ? SQLITE_OK : SQLITE_NOMEM;
}

int disconnect(sqlite3_vtab* table) {
    delete static_cast<Table*>(table);
    return SQLITE_OK;
}

template <class Cursor>
int open(sqlite3_vtab*, sqlite3_vtab_cursor** out) {
    *out = new (std::nothrow) Cursor();
    return *out ? SQLITE_OK : SQLITE_NOMEM;
}

template <class Cursor>
int close(sqlite3_vtab_cursor* cursor) {
    delete static_cast<Cursor*>(cursor);
    return SQLITE_OK;
}

template <class Cursor>
int next(sqlite3_vtab_cursor* cursor) {
    ++static_cast<Cursor*>(cursor)->row;
    return SQLITE_OK;
}

template <class Cursor>
int atEnd(sqlite3_vtab_cursor* cursor) {
    return static_cast<Cursor*>(cursor)->row >= static_cast<Cursor*>(cursor)->count;
}

template <class Cursor>
int rowId(sqlite3_vtab_cursor* cursor, sqlite3_int64* out) {
    *out = static_cast<sqlite3_int64>(static_cast<Cursor*>(cursor)->row);
    return SQLITE_OK;
}

/// The functions that all tables share. Without a create function a table exists by its name alone.
template <class Cursor>
sqlite3_module moduleOf(decltype(sqlite3_module::xConnect) connect, decltype(sqlite3_module::xBestIndex) bestIndex,
                        decltype(sqlite3_module::xFilter) filter, decltype(sqlite3_module::xColumn) column) {
    sqlite3_module module{};
    module.xConnect = connect;
    module.xBestIndex = bestIndex;
    module.xDisconnect = disconnect;
    module.xOpen = open<Cursor>;
    module.xClose = close<Cursor>;
    module.xFilter = filter;
    module.xNext = next<Cursor>;
    module.xEof = atEnd<Cursor>;
    module.xColumn = column;
    module.xRowid = rowId<Cursor>;
    return module;
}

// The table of values: "value" and the hidden argument "list".

struct ValuesCursor : sqlite3_vtab_cursor {
    ListTables::List list;
    std::size_t row = 0, count = 0;
};

int connectValues(sqlite3* handle, void* lists, int, const char* const*, sqlite3_vtab** out, char**) {
    return connect(handle, lists, "CREATE TABLE x(value, list HIDDEN)", out);
}

int planValues(sqlite3_vtab*, sqlite3_index_info* info) {
    constexpr int listColumn = 1;
    info->estimatedCost = unusable;
    for (int i = 0; i < info->nConstraint; ++i) {
        auto& constraint = info->aConstraint[i];
        if (constraint.iColumn != listColumn || constraint.op != SQLITE_INDEX_CONSTRAINT_EQ || !constraint.usable)
            continue;
        info->aConstraintUsage[i].argvIndex = 1;
        info->aConstraintUsage[i].omit = 1;
        info->estimatedCost = oneRow;
        info->estimatedRows = 1000;
        info->idxNum = 1;
        break;
    }
    return SQLITE_OK;
}

int startValues(sqlite3_vtab_cursor* base, int plan, const char*, int, sqlite3_value** arguments) {
    auto& cursor = *static_cast<ValuesCursor*>(base);
    auto number = plan == 1 ? static_cast<std::size_t>(sqlite3_value_int64(arguments[0])) : SIZE_MAX;
    cursor.list = static_cast<Table*>(base->pVtab)->lists.list(number);
    cursor.row = 0;
    cursor.count = cursor.list.size();
    return SQLITE_OK;
}

int valueColumn(sqlite3_vtab_cursor* base, sqlite3_context* context, int column) {
    auto& cursor = *static_cast<ValuesCursor*>(base);
    if (column == 0) answer(context, cursor.list[cursor.row], Lifetime::untilNextRow);
    return SQLITE_OK;
}

// The table of rows.

struct RowsCursor : sqlite3_vtab_cursor {
    const tarvo::RowSource* batch = nullptr;
    std::size_t row = 0, count = 0, columns = 0;
};

template <int width>
int connectRows(sqlite3* handle, void* lists, int, const char* const*, sqlite3_vtab** out, char**) {
    std::string shape = "CREATE TABLE x(c0";
    for (int i = 1; i < width; ++i) shape += ",c" + std::to_string(i);
    return connect(handle, lists, shape + ")", out);
}

int planRows(sqlite3_vtab*, sqlite3_index_info* info) {
    info->estimatedCost = everyRow;
    return SQLITE_OK;
}

int startRows(sqlite3_vtab_cursor* base, int, const char*, int, sqlite3_value**) {
    auto& cursor = *static_cast<RowsCursor*>(base);
    cursor.batch = static_cast<Table*>(base->pVtab)->lists.batch();
    cursor.row = 0;
    cursor.count = cursor.batch ? cursor.batch->rowCount() : 0;
    cursor.columns = cursor.batch ? cursor.batch->columns().size() : 0;
    return SQLITE_OK;
}

int rowColumn(sqlite3_vtab_cursor* base, sqlite3_context* context, int column) try {
    auto& cursor = *static_cast<RowsCursor*>(base);
    if (static_cast<std::size_t>(column) >= cursor.columns) return SQLITE_OK;
    auto cell = cursor.batch->cell(cursor.row, static_cast<std::size_t>(column));
    if (!cell.nested()) {
        answer(context, cell, Lifetime::untilNextRow);
        return SQLITE_OK;
    }
    auto stored = databaseValue(*cell.nested());
    if (!stored) return SQLITE_MISUSE;
    answer(context, viewOf(*stored), Lifetime::thisCall);
    return SQLITE_OK;
} catch (...) {
    // A failure of the source must not pass through SQLite's own code.
    return SQLITE_NOMEM;
}

const sqlite3_module valuesModule = moduleOf<ValuesCursor>(connectValues, planValues, startValues, valueColumn);
const std::array<sqlite3_module, widths.size()> rowsModules = {
    moduleOf<RowsCursor>(connectRows<widths[0]>, planRows, startRows, rowColumn),
    moduleOf<RowsCursor>(connectRows<widths[1]>, planRows, startRows, rowColumn),
    moduleOf<RowsCursor>(connectRows<widths[2]>, planRows, startRows, rowColumn),
    moduleOf<RowsCursor>(connectRows<widths[3]>, planRows, startRows, rowColumn)};

std::string rowsTableName(int width) { return "kelva_rows_" + std::to_string(width); }

}  // namespace

void ListTables::registerWith(sqlite3* handle) {
    auto code = sqlite3_create_module(handle, valuesTableName, &valuesModule, this);
    for (std::size_t i = 0; code == SQLITE_OK && i < widths.size(); ++i)
        code = sqlite3_create_module(handle, rowsTableName(widths[i]).c_str(), &rowsModules[i], this);
    if (code != SQLITE_OK) throwLastError(handle, Stage::open);
}

std::string ListTables::rowsTableFor(std::size_t columns) {
    for (auto width : widths)
        if (columns <= static_cast<std::size_t>(width)) return rowsTableName(width);
    throwError(FailureKind::misuse, "a batch of " + std::to_string(columns) + " columns is wider than a table can be");
}

}  // namespace kelva
