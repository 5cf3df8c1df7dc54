#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/Value.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/network_layer/TypedReads.h"

namespace tarvo {

/// A row of a positional answer, read column by column. Most columns are texts, from which flags and numbers are read.
/// A null, and a column beyond the end of the row, read as the empty text, so that a missing value never costs a row. A
/// lenient row reads other types as empty too; a strict row keeps the leftmost of such columns as its `error`. The row
/// refers to the list, which must outlive it.
class PositionalRow {
public:
    enum class Mode { lenient, strict };

    PositionalRow(const ValueList& values, Mode mode) : values_(&values), mode_(mode) {}
    /// Opens an entry as a row. Fails with `typeConversionFailed` if it is not a list, with `lessNumberOfKeys` if it
    /// has fewer columns.
    static Result<PositionalRow, ParserError> open(const Value& entry, std::size_t leastColumns, Mode mode);

    std::size_t size() const { return values_->size(); }
    /// Returns the column as it came, or null beyond the end.
    const Value& value(std::size_t column) const;

    std::string text(std::size_t column);
    /// Returns whether the column is the text "true".
    bool flag(std::size_t column) { return text(column) == "true"; }
    /// Returns the number in a decimal text, or 0 for any other text. Numbers in rows are positions and lengths only.
    int number(std::size_t column);
    /// Fills the members whose fields have a place in the row (`at` in the list of fields): texts, flags and numbers.
    template <class T>
    void fill(T& value) {
        auto fillOne = [&](const auto& field) {
            if constexpr (requires { field.place; }) readInto(value.*field.pointer, field.place);
        };
        T::fields().apply([&](const auto&... fields) { (fillOne(fields), ...); });
    }
    /// The error of the leftmost column that failed a strict row.
    const std::optional<ParserError>& error() const { return error_; }

    /// Returns the column if it has this type, otherwise nullopt. It never fails the row.
    template <class T>
    std::optional<T> read(std::size_t column) const {
        return readIndex<T>(*values_, column);
    }
    /// These two return a number, also one that is written as text, otherwise nullopt.
    std::optional<int> integer(std::size_t column) const;
    std::optional<double> real(std::size_t column) const;
    /// Returns the first `count` columns, or nullopt unless all of them are texts. A null is not a text here.
    std::optional<std::vector<std::string>> leadingTexts(std::size_t count) const;

private:
    void readInto(std::string& member, std::size_t column) { member = text(column); }
    void readInto(bool& member, std::size_t column) { member = flag(column); }
    void readInto(int& member, std::size_t column) { member = number(column); }

    const ValueList* values_;
    Mode mode_;
    std::optional<ParserError> error_;
    std::size_t failedColumn_ = 0;  ///< the column of the error
};

/// Returns the values of `read(row)`, which returns an optional, in the order of the rows. Rows are lenient. Entries
/// that are not lists and rows without a value are left out.
template <class Read>
auto readUsableRows(const ValueList& entries, Read&& read) {
    using T = typename decltype(read(std::declval<PositionalRow&>()))::value_type;
    std::vector<T> values;
    for (auto& entry : entries) {
        if (!entry.asList()) continue;
        PositionalRow row(*entry.asList(), PositionalRow::Mode::lenient);
        if (auto value = read(row)) values.push_back(*std::move(value));
    }
    return values;
}

}  // namespace tarvo
