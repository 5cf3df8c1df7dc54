#include "tarvobase/get_metadata/WireRow.h"

#include <utility>

#include "platform/Text.h"

namespace tarvo {

std::string WireRow::text(std::size_t column) {
    auto& value = values_[column];
    if (auto held = value.asText()) return *held;
    if (!value.isNull() && !error_) error_ = ParserError::typeConversionFailedForIndex(column);
    return {};
}

int WireRow::number(std::size_t column) {
    auto number = text::toInteger(text(column));
    return number && std::in_range<int>(*number) ? static_cast<int>(*number) : 0;
}

}  // namespace tarvo
