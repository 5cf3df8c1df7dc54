#pragma once

#include <sqlite3.h>

#include <string>
#include <vector>

namespace kelva::benchmarks {

/// The quickest known way to do the same work with hand-written code on SQLCipher: raw handles, no classes, and no
/// checks beyond the result code. It is the floor against which the library is measured.
class HandWritten {
public:
    using Table = std::vector<std::vector<std::string>>;

    /// Opens the file with a raw key and salt as SQLCipher's key text, and with the settings of the library.
    HandWritten(const std::string& path, const std::string& keyText);
    ~HandWritten();

    void run(const char* sql);
    /// Runs one INSERT OR REPLACE ... SELECT from a virtual table over the rows, in a transaction.
    void insert(const std::string& table, const std::vector<std::string>& columns, const Table& rows);

    /// A cell that refers to its text; it is a number if there is no text.
    struct View {
        const char* text;
        std::size_t length;
        long long number;
        bool isNull = false;
    };
    /// Does the same with cells, row by row.
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
    /// Reads all rows into one block of cells and one of text.
    Result fetch(const char* sql);

    sqlite3* handle() const { return handle_; }

private:
    void insertCurrent(const std::string& table, const std::vector<std::string>& columns);
    sqlite3* handle_ = nullptr;
};

}  // namespace kelva::benchmarks
