#include "kelva_db/internal/Execution.h"

#include <sqlite3.h>

#include "kelva_db/internal/Sqlite.h"

namespace kelva {

Execution::Execution(Connection& connection, std::string_view sql, std::string_view& rest)
    : connection_(connection),
      loan_((connection.checkUsable(), connection.statements_.take(sql, rest))),
      mark_(connection.tracker_ ? connection.tracker_->mark() : 0),
      changesBefore_(sqlite3_total_changes(connection.handle())) {
    if (connection.readOnly_ && loan_.get() && !sqlite3_stmt_readonly(loan_.get()))
        throwError(FailureKind::readOnly, "a statement that writes was run inside a read");
    connection.noteStatement(sql);
}

std::size_t Execution::parameterCount() const {
    return loan_.get() ? static_cast<std::size_t>(sqlite3_bind_parameter_count(loan_.get())) : 0;
}

bool Execution::givesRows() const { return loan_.get() && sqlite3_column_count(loan_.get()) > 0; }

void Execution::bind(std::span<const ValueView> values) {
    if (values.size() != parameterCount())
        throwError(FailureKind::misuse, "the statement has " + std::to_string(parameterCount()) +
                                            " placeholders, and " + std::to_string(values.size()) +
                                            " parameters were given");
    for (std::size_t i = 0; i < values.size(); ++i)
        if (kelva::bind(loan_.get(), static_cast<int>(i + 1), values[i]) != SQLITE_OK) fail();
}

void Execution::fail() {
    auto& tracker = connection_.tracker_;
    connection_.noteFailure();
    // A failed statement has undone its rows, unless it is one that keeps what it did before the failure.
    if (tracker && sqlite3_total_changes(connection_.handle()) == changesBefore_) tracker->forgetSince(mark_);
    throwLastError(connection_.handle(), Stage::run);
}

bool Execution::step() {
    switch (sqlite3_step(loan_.get())) {
        case SQLITE_ROW:
            return true;
        case SQLITE_DONE:
            return false;
        default:
            fail();
    }
}

void Execution::runToEnd() {
    if (!loan_.get()) return;
    while (step()) {
    }
}

void Execution::reset() {
    sqlite3_reset(loan_.get());
    if (connection_.tracker_) mark_ = connection_.tracker_->mark();
    changesBefore_ = sqlite3_total_changes(connection_.handle());
}

void Execution::addCell(Rows::Builder& builder, int column) const {
    auto statement = loan_.get();
    auto size = [&] { return static_cast<std::size_t>(sqlite3_column_bytes(statement, column)); };
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_INTEGER:
            return builder.addInteger(sqlite3_column_int64(statement, column));
        case SQLITE_FLOAT:
            return builder.addReal(sqlite3_column_double(statement, column));
        case SQLITE_TEXT: {
            auto text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
            return builder.addText({text, size()});
        }
        case SQLITE_BLOB: {
            auto bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
            return builder.addBytes({bytes, size()});
        }
        default:
            return builder.addNull();
    }
}

Rows Execution::allRows() {
    if (!loan_.get()) return {};
    // The columns are known for certain after the first step, which may prepare the statement again.
    bool row = step();
    auto count = sqlite3_column_count(loan_.get());
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i) names.emplace_back(sqlite3_column_name(loan_.get(), i));
    Rows::Builder builder(std::move(names));
    for (; row; row = step())
        for (int i = 0; i < count; ++i) addCell(builder, i);
    return builder.finish();
}

}  // namespace kelva
