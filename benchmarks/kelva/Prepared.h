#pragma once

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace kelva::benchmarks {

/// A prepared statement that reads all of what it finds.
class Prepared {
public:
    Prepared(sqlite3* handle, const std::string& sql) : handle_(handle) {
        require(sqlite3_prepare_v2(handle, sql.c_str(), -1, &statement_, nullptr));
    }
    ~Prepared() { sqlite3_finalize(statement_); }
    Prepared(Prepared&& other) noexcept
        : handle_(other.handle_), statement_(std::exchange(other.statement_, nullptr)) {}
    Prepared& operator=(Prepared&&) = delete;

    void run(const std::vector<std::string>& texts = {}) {
        int place = 0;
        for (auto& text : texts)
            require(sqlite3_bind_text(statement_, ++place, text.data(), static_cast<int>(text.size()), SQLITE_STATIC));
        read_.clear();
        int code = SQLITE_OK;
        while ((code = sqlite3_step(statement_)) == SQLITE_ROW)
            for (int i = 0; i < sqlite3_column_count(statement_); ++i)
                if (auto text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, i)))
                    read_.append(text, static_cast<std::size_t>(sqlite3_column_bytes(statement_, i)));
        if (code != SQLITE_DONE) require(code);
        sqlite3_reset(statement_);
    }
    const std::string& read() const { return read_; }

private:
    void require(int code) const {
        if (code == SQLITE_OK) return;
        std::fprintf(stderr, "a hand-written statement failed: %s\n", sqlite3_errmsg(handle_));
        std::abort();
    }
    sqlite3* handle_;
    sqlite3_stmt* statement_ = nullptr;
    std::string read_;
};

}  // namespace kelva::benchmarks
