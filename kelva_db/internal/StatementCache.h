#pragma once

#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

struct sqlite3;
struct sqlite3_stmt;

namespace kelva {

/// Prepared statements of one connection by their text. A statement is lent to one user at a time; a second user of
/// the same text gets one of its own. SQLite prepares a kept statement again by itself when the schema has changed.
class StatementCache {
public:
    explicit StatementCache(sqlite3* handle) : handle_(handle) {}
    ~StatementCache() { clear(); }

    /// A statement on loan. Giving it back resets it and lets go of what was bound.
    class Loan {
    public:
        Loan() = default;
        Loan(Loan&& other) noexcept
            : cache_(other.cache_),
              statement_(std::exchange(other.statement_, nullptr)),
              text_(std::move(other.text_)) {}
        Loan& operator=(Loan&&) = delete;
        ~Loan();
        sqlite3_stmt* get() const { return statement_; }

    private:
        friend class StatementCache;
        StatementCache* cache_ = nullptr;
        sqlite3_stmt* statement_ = nullptr;
        std::string text_;  // empty when the statement is not kept
    };

    /// Prepares the first statement of a text and puts what follows it into `rest`. The loan is empty when there is
    /// none (blanks, comments). Throws.
    Loan take(std::string_view sql, std::string_view& rest);

    /// Ends all statements that are not on loan.
    void clear();

private:
    struct Kept {
        std::string text;
        sqlite3_stmt* statement;
    };
    sqlite3_stmt* takeKept(const std::string& text);
    void giveBack(sqlite3_stmt* statement, std::string text);

    // A screen's queries and the writes of a sync fit; a statement takes some kilobytes. Texts of long lists are
    // unlikely to come twice.
    static constexpr std::size_t capacity = 100, longestText = 16 * 1024;

    sqlite3* handle_;
    std::list<Kept> kept_;  // most recently used first
    std::unordered_multimap<std::string_view, std::list<Kept>::iterator> byText_;
};

}  // namespace kelva
