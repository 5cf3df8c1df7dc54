#include "tarvobase/network_layer/PositionalRow.h"

#include <utility>

#include "platform/Text.h"

namespace tarvo {

namespace {

std::optional<int> inRange(std::optional<std::int64_t> number) {
    return number && std::in_range<int>(*number) ? std::optional(static_cast<int>(*number)) : std::nullopt;
}

}  // namespace

Result<PositionalRow, ParserError> PositionalRow::open(const Value& entry, std::size_t leastColumns, Mode mode) {
    auto values = entry.asList();
    if (!values) return ParserError(ParserError::Case::typeConversionFailed);
    if (values->size() < leastColumns) return ParserError(ParserError::Case::lessNumberOfKeys);
    return PositionalRow(*values, mode);
}

const Value& PositionalRow::value(std::size_t column) const {
    static const Value null;
    return column < size() ? (*values_)[column] : null;
}

std::string PositionalRow::text(std::size_t column) {
    auto& held = value(column);
    if (auto text = held.asText()) return *text;
    bool isFailure = mode_ == Mode::strict && !held.isNull();
    if (isFailure && (!error_ || column < failedColumn_)) {
        error_ = ParserError::typeConversionFailedForIndex(column);
        failedColumn_ = column;
    }
    return {};
}

int PositionalRow::number(std::size_t column) { return inRange(text::toInteger(text(column))).value_or(0); }

std::optional<int> PositionalRow::integer(std::size_t column) const {
    auto& held = value(column);
    return inRange(held.asText() ? text::toInteger(*held.asText()) : held.asInteger());
}

std::optional<double> PositionalRow::real(std::size_t column) const {
    auto& held = value(column);
    return held.asText() ? text::toReal(*held.asText()) : held.toReal();
}

std::optional<std::vector<std::string>> PositionalRow::leadingTexts(std::size_t count) const {
    if (size() < count) return std::nullopt;
    std::vector<std::string> texts;
    texts.reserve(count);
    for (std::size_t column = 0; column < count; ++column) {
        auto text = (*values_)[column].asText();
        if (!text) return std::nullopt;
        texts.push_back(*text);
    }
    return texts;
}

}  // namespace tarvo
