#pragma once

#include <sqlite3.h>

#include <string>

namespace tarvo::sandbox::tests {

/// A database in memory that statements of the server are tried on.
class Sql {
public:
    Sql() { sqlite3_open(":memory:", &database_); }
    ~Sql() { sqlite3_close(database_); }
    Sql(const Sql&) = delete;
    Sql& operator=(const Sql&) = delete;

    /// The error of a statement, or the empty text.
    std::string run(const std::string& statement) {
        return sqlite3_exec(database_, statement.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK
                   ? ""
                   : sqlite3_errmsg(database_);
    }
    /// The number that a query answers, or -1.
    long long number(const std::string& query) {
        sqlite3_stmt* statement = nullptr;
        long long answer = -1;
        if (sqlite3_prepare_v2(database_, query.c_str(), -1, &statement, nullptr) == SQLITE_OK &&
            sqlite3_step(statement) == SQLITE_ROW)
            answer = sqlite3_column_int64(statement, 0);
        sqlite3_finalize(statement);
        return answer;
    }

private:
    sqlite3* database_ = nullptr;
};

}  // namespace tarvo::sandbox::tests
