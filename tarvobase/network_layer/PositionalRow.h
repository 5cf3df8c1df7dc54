#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/Value.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/network_layer/TypedReads.h"

namespace tarvo {

/// A row of a positional answer, read column by column. Columns are texts as a rule, and what they say is read from the
/// text. A null, and a column beyond the end of the row, read as the empty text, so that a column without a value costs
/// no row. The mode decides what another type costs: a lenient row reads it as empty too, a strict row keeps the first
/// such column, from the left, as its `error`. The row refers to the list, which must outlive it.
class PositionalRow {
public:
    enum class Mode { lenient, strict };

    PositionalRow(const ValueList& values, Mode mode) : values_(&values), mode_(mode) {}
    /// `typeConversionFailed` for an entry that is not a list, `lessNumberOfKeys` for one of fewer columns.
    static Result<PositionalRow, ParserError> open(const Value& entry, std::size_t leastColumns, Mode mode);

    std::size_t size() const { return values_->size(); }
    /// The column as it came; null beyond the end.
    const Value& value(std::size_t column) const;

    std::string text(std::size_t column);
    /// True for the text "true".
    bool flag(std::size_t column) { return text(column) == "true"; }
    /// A decimal text; 0 for any other text, as it only says where a thing stands or how long it may be.
    int number(std::size_t column);
    /// Fills the members whose fields have a place in the row (`at` in the list of fields): texts, flags and numbers.
    template <class T>
    void fill(T& value) {
        auto fillOne = [&](const auto& field) {
            if constexpr (requires { field.place; }) readInto(value.*field.pointer, field.place);
        };
        T::fields().apply([&](const auto&... fields) { (fillOne(fields), ...); });
    }
    /// The leftmost column that failed a strict row.
    const std::optional<ParserError>& error() const { return error_; }

    /// The column if it is of this type. Never fails the row.
    template <class T>
    std::optional<T> read(std::size_t column) const {
        return readIndex<T>(*values_, column);
    }
    /// A number, or a text that holds one.
    std::optional<int> integer(std::size_t column) const;
    std::optional<double> real(std::size_t column) const;
    /// The first `count` columns; nullopt unless all of them are there and are texts. Here a null is none.
    std::optional<std::vector<std::string>> leadingTexts(std::size_t count) const;

private:
    void readInto(std::string& member, std::size_t column) { member = text(column); }
    void readInto(bool& member, std::size_t column) { member = flag(column); }
    void readInto(int& member, std::size_t column) { member = number(column); }

    const ValueList* values_;
    Mode mode_;
    std::optional<ParserError> error_;
    std::size_t failedColumn_ = 0;  ///< that of the error
};

/// Each entry that is a list as a lenient row through `read(row)`, which returns an optional value; the values in the
/// order of their rows. Whatever is not a list, or gives no value, is left out.
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
