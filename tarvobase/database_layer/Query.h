#pragma once

#include <string>

#include "platform/Value.h"

namespace tarvo {

/// A piece of SQL that renders itself: text with `?` placeholders, and the bound values in placeholder order. Names of
/// tables and columns are pasted as they are; values reach SQLite through placeholders. Rendering never fails: what
/// SQLite rejects shows in the adapter's answer.
class Query {
public:
    virtual ~Query() = default;
    virtual std::string sql() const = 0;
    virtual ValueList parameters() const = 0;
};

}  // namespace tarvo
