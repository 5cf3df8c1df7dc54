#pragma once

#include <deque>
#include <span>
#include <vector>

#include "kelva_db/DatabaseValue.h"

struct sqlite3_context;
struct sqlite3_stmt;

namespace kelva {

using tarvo::ValueView;

/// Parameters as SQLite takes them. Flat values are looked at where they lie, so the parameters must outlive this;
/// lists, maps and objects get their stored form here. Throws `misuse` for a value that cannot be bound.
class BoundValues {
public:
    explicit BoundValues(std::span<const Value> parameters);
    std::span<const ValueView> views() const { return views_; }

private:
    std::vector<ValueView> views_;
    std::deque<DatabaseValue> stored_;
};

/// Whether a value has a form that SQLite can store.
bool isBindable(const ValueView& value);
[[noreturn]] void throwNotBindable(const ValueView& value);

/// Binds a flat value, which must stay where it is until the statement has run. Answers SQLite's code.
int bind(sqlite3_stmt* statement, int position, const ValueView& value);

enum class Lifetime { untilNextRow, thisCall };
/// Answers a value from a function of a virtual table. A value that lives for this call alone is copied.
void answer(sqlite3_context* context, const ValueView& value, Lifetime lifetime);

/// A stored form as a view of it.
ValueView viewOf(const DatabaseValue& value);

}  // namespace kelva
