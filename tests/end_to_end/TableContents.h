#pragma once

#include <sqlite3.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace tarvo::tests {

/// Returns the contents of an encrypted database by table: the number of rows and a hash over them that does not depend
/// on their order and leaves out the local row numbers. The identity of the database is left out. Empty if the file
/// does not open.
inline std::map<std::string, std::string> tablesOf(const std::string& path, const std::string& passphrase) {
    sqlite3* database = nullptr;
    std::map<std::string, std::string> tables;
    auto rowsOf = [&](const std::string& sql) {
        std::vector<std::string> rows;
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr);
        while (statement && sqlite3_step(statement) == SQLITE_ROW) {
            auto& row = rows.emplace_back();
            for (int i = 0; i < sqlite3_column_count(statement); ++i) {
                if (std::string_view(sqlite3_column_name(statement, i)) == "_id") continue;
                auto text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
                row.append(text ? text : "(null)",
                           text ? static_cast<std::size_t>(sqlite3_column_bytes(statement, i)) : 6);
                row += '|';
            }
        }
        sqlite3_finalize(statement);
        std::sort(rows.begin(), rows.end());
        return rows;
    };
    if (sqlite3_open(path.c_str(), &database) == SQLITE_OK) {
        rowsOf("PRAGMA key = '" + passphrase + "'");
        rowsOf("PRAGMA cipher_page_size = 4096");
        for (auto& name : rowsOf("SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%' "
                                 "AND name <> 'TARVO_DATABASE_IDENTITY'")) {
            auto table = name.substr(0, name.size() - 1);
            auto rows = rowsOf("SELECT * FROM \"" + table + "\"");
            std::string all;
            for (auto& row : rows) all += row + "\n";
            tables[table] = std::to_string(rows.size()) + " rows, " + std::to_string(std::hash<std::string>()(all));
        }
    }
    sqlite3_close(database);
    return tables;
}

}  // namespace tarvo::tests
