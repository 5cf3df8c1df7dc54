#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace tarvo::tests {

/// Reads an encrypted database file beside the program that has it open. The key is derived once per object.
class EncryptedFile {
public:
    using Tables = std::map<std::string, std::vector<std::string>>;

    EncryptedFile(const std::string& path, const std::string& passphrase) {
        if (sqlite3_open(path.c_str(), &database_) != SQLITE_OK) return;
        sqlite3_busy_timeout(database_, 10'000);
        rows("PRAGMA key = '" + passphrase + "'");
        rows("PRAGMA cipher_page_size = 4096");
    }
    ~EncryptedFile() { sqlite3_close(database_); }
    EncryptedFile(const EncryptedFile&) = delete;
    EncryptedFile& operator=(const EncryptedFile&) = delete;

    /// Returns the rows of each table in an order of their own, without the local row numbers. The identity of the
    /// database is left out. Empty if the file does not open.
    Tables tables() {
        Tables tables;
        for (auto& name : rows("SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%' AND "
                               "name <> 'TARVO_DATABASE_IDENTITY'")) {
            auto table = name.substr(0, name.size() - 1);
            tables[table] = rows("SELECT * FROM \"" + table + "\"");
        }
        return tables;
    }

    /// The values of a row by column; empty for null.
    using Row = std::map<std::string, std::string>;
    std::vector<Row> select(const std::string& sql) {
        std::vector<Row> found;
        forEachRow(sql, [&](sqlite3_stmt* statement) {
            Row row;
            for (int i = 0; i < sqlite3_column_count(statement); ++i) {
                auto text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
                row[sqlite3_column_name(statement, i)] = text ? text : "";
            }
            found.push_back(std::move(row));
        });
        return found;
    }

    /// Runs a statement, such as one that takes the writer's lock. Returns whether it succeeded.
    bool execute(const std::string& sql) {
        return sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
    }

private:
    std::vector<std::string> rows(const std::string& sql) {
        std::vector<std::string> rows;
        forEachRow(sql, [&](sqlite3_stmt* statement) { rows.push_back(text(statement)); });
        std::sort(rows.begin(), rows.end());
        return rows;
    }

    void forEachRow(const std::string& sql, auto&& visit) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, nullptr);
        while (statement && sqlite3_step(statement) == SQLITE_ROW) visit(statement);
        sqlite3_finalize(statement);
    }

    static std::string text(sqlite3_stmt* statement) {
        std::string row;
        for (int i = 0; i < sqlite3_column_count(statement); ++i) {
            if (std::string_view(sqlite3_column_name(statement, i)) == "_id") continue;
            auto text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
            row.append(text ? text : "(null)", text ? static_cast<std::size_t>(sqlite3_column_bytes(statement, i)) : 6);
            row += '|';
        }
        return row;
    }

    sqlite3* database_ = nullptr;
};

/// Expects the same tables with the same rows.
inline void expectSameTables(const EncryptedFile::Tables& expected, const EncryptedFile::Tables& found) {
    EXPECT_EQ(found.size(), expected.size());
    for (auto& [table, rows] : expected) {
        auto present = found.contains(table) ? found.at(table) : std::vector<std::string>();
        auto [expectedRow, row] = std::mismatch(rows.begin(), rows.end(), present.begin(), present.end());
        EXPECT_TRUE(present == rows) << table << " has " << present.size() << " rows of " << rows.size()
                                     << ", the first that differs:\n"
                                     << (expectedRow == rows.end() ? "none" : *expectedRow) << "\n"
                                     << (row == present.end() ? "none" : *row);
    }
}

}  // namespace tarvo::tests
