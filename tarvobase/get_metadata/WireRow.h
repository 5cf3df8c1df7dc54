#pragma once

#include <optional>
#include <string>

#include "tarvobase/network_layer/ParserError.h"

namespace tarvo {

/// A row of a positional answer, read column by column. Columns are texts; what they say is read from the text. A null
/// counts as the empty text, so that a column without a value costs no row. A column of another type gives an empty
/// value and makes the row fail; the first such column is its error. Reads of columns that the row does not have are
/// the caller's mistake.
class WireRow {
public:
    explicit WireRow(const ValueList& values) : values_(values) {}

    std::string text(std::size_t column);
    /// True for the text "true".
    bool flag(std::size_t column) { return text(column) == "true"; }
    /// A decimal text; 0 for any other text, as it only says where a thing stands or how long it may be.
    int number(std::size_t column);
    const Value& value(std::size_t column) const { return values_[column]; }

    const std::optional<ParserError>& error() const { return error_; }

private:
    const ValueList& values_;
    std::optional<ParserError> error_;
};

}  // namespace tarvo
