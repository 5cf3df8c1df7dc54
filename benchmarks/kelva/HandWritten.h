#pragma once

#include <sqlite3.h>

#include <string>
#include <vector>

namespace kelva::benchmarks {

/// The quickest way that is known to do the same work on SQLCipher by hand: raw handles, no classes, no checks beyond
/// the result code. The floor that the library is measured against.
class HandWritten {
public:
    using Table = std::vector<std::vector<std::string>>;

    /// Opens with a raw key and salt as SQLCipher's key text, and the settings of the library.
    HandWritten(const std::string& path, const std::string& keyText);
    ~HandWritten();

    void run(const char* sql);
    /// One INSERT OR REPLACE ... SELECT from a virtual table over the rows, in a transaction.
    void insert(const std::string& table, const std::vector<std::string>& columns, const Table& rows);

    /// A cell where it lies: a text, or a number when there is none.
    struct View {
        const char* text;
        std::size_t length;
        long long number;
        bool isNull = false;
    };
    /// The same from cells row by row.
    void insert(const std::string& table, const std::vector<std::string>& columns, const std::vector<View>& cells);

    struct Cell {
        int type;
        long long number;
        std::size_t offset, length;
    };
    struct Result {
        std::vector<Cell> cells;
        std::string texts;
    };
    /// All rows into one block of cells and one of text.
    Result fetch(const char* sql);

private:
    void insertCurrent(const std::string& table, const std::vector<std::string>& columns);
    sqlite3* handle_ = nullptr;
};

}  // namespace kelva::benchmarks
