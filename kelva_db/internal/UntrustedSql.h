#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "platform/Clock.h"

struct sqlite3;

namespace kelva {

/// The bounds of SQL that came from outside, in force on a connection as long as this lives. What tables need is
/// allowed: to make, change and drop tables and indexes, and to fill them. Refused is all that reaches beyond the
/// tables of the database (settings, other files, functions with effects outside, the schema table), and what could
/// run for ever (recursive queries) or later and unbounded (triggers, views, virtual tables). Texts and patterns have a
/// length limit and each statement a time limit, since one endless statement would stop every write.
class UntrustedSql {
public:
    UntrustedSql(sqlite3* handle, std::chrono::milliseconds timeLimit);
    ~UntrustedSql();
    UntrustedSql(const UntrustedSql&) = delete;

    /// Returns SQLite's answer of an authorizer for an action, and keeps the kind of what it refuses.
    int authorize(int action, const char* first, const char* second);

    /// Begins the next statement: its time limit counts from now, and nothing of it is refused yet.
    void beginStatement();
    /// Refuses VACUUM, which SQLite runs without asking an authorizer. Returns whether the text begins with it.
    bool refusesUnasked(std::string_view sql);
    /// Refuses the statement, if it has not been refused yet.
    void refuse(std::string_view kind);
    /// Returns the kind of what the statement was refused for, empty if it was not.
    const std::string& refused() const { return refused_; }
    bool isOverdue() const { return isOverdue_; }

private:
    static int progress(void* self);

    sqlite3* const handle_;
    const std::chrono::milliseconds timeLimit_;
    tarvo::platform::Clock::SteadyTime began_;
    std::string refused_;
    bool isOverdue_ = false;
    int lengthBefore_ = 0, patternLengthBefore_ = 0;
};

}  // namespace kelva
