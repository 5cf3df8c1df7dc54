#pragma once

#include "kelva_db/internal/BoundValues.h"
#include "kelva_db/internal/Connection.h"

namespace kelva {

/// One run of one statement. Whatever happens, the statement is reset at the end, and the tracker forgets the rows
/// of a statement that failed.
class Execution {
public:
    /// Prepares the first statement of the text; what follows goes to `rest`.
    Execution(Connection& connection, std::string_view sql, std::string_view& rest);

    std::size_t parameterCount() const;
    bool givesRows() const;
    /// The values must stay where they are until the run is over.
    void bind(std::span<const ValueView> values);
    void runToEnd();
    /// Makes the statement ready for another run, with other values.
    void reset();
    Rows allRows();

private:
    bool step();
    [[noreturn]] void fail();
    void addCell(Rows::Builder& builder, int column) const;

    Connection& connection_;
    StatementCache::Loan loan_;
    std::size_t mark_ = 0;
    int changesBefore_ = 0;
};

}  // namespace kelva
