#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Result.h"
#include "platform/Value.h"
#include "tarvobase/network_layer/ParserError.h"

namespace tarvo {

/// Returns the items of a list, or nullopt unless all of them are texts.
inline std::optional<std::vector<std::string>> allTexts(const ValueList& list) {
    std::vector<std::string> texts;
    texts.reserve(list.size());
    for (auto& item : list) {
        if (!item.asText()) return std::nullopt;
        texts.push_back(*item.asText());
    }
    return texts;
}

/// Returns a member of a JSON map or list if it has this type; it is never converted. `T` is `bool`, `std::int64_t`,
/// `std::uint64_t`, `double` (whole numbers too), `std::string`, a list of `std::string`, `ValueList` or `ValueMap`.
template <class T>
std::optional<T> readAs(const Value& value) {
    if constexpr (std::is_same_v<T, bool>) return value.asBool();
    if constexpr (std::is_same_v<T, std::int64_t>) return value.asInteger();
    if constexpr (std::is_same_v<T, std::uint64_t>) {
        auto integer = value.asInteger();
        return integer && *integer >= 0 ? std::optional<T>(static_cast<T>(*integer)) : std::nullopt;
    }
    if constexpr (std::is_same_v<T, double>) return value.toReal();
    if constexpr (std::is_same_v<T, std::vector<std::string>>)
        return value.asList() ? allTexts(*value.asList()) : std::nullopt;
    auto copied = [](auto* held) { return held ? std::optional<T>(*held) : std::nullopt; };
    if constexpr (std::is_same_v<T, std::string>) return copied(value.asText());
    if constexpr (std::is_same_v<T, ValueList>) return copied(value.asList());
    if constexpr (std::is_same_v<T, ValueMap>) return copied(value.asMap());
}

/// Reads a key. Fails with `keyNotFound` if it is absent, with `typeConversionFailedForKey` if it has another type.
template <class T>
Result<T, ParserError> parseAs(const ValueMap& map, std::string_view key) {
    auto value = map.find(key);
    if (!value) return ParserError::keyNotFound(std::string(key));
    if (auto typed = readAs<T>(*value)) return *std::move(typed);
    return ParserError::typeConversionFailedForKey(std::string(key));
}

/// Reads an item. Fails with `keyNotFound` and the index as text beyond the end, with `typeConversionFailedForIndex` if
/// it has another type.
template <class T>
Result<T, ParserError> parseAs(const ValueList& list, std::size_t index) {
    if (index >= list.size()) return ParserError::keyNotFound(std::to_string(index));
    if (auto typed = readAs<T>(list[index])) return *std::move(typed);
    return ParserError::typeConversionFailedForIndex(index);
}

/// The lenient forms return nullopt if the key or item is absent or has another type.
template <class T>
std::optional<T> readKey(const ValueMap& map, std::string_view key) {
    auto value = map.find(key);
    return value ? readAs<T>(*value) : std::nullopt;
}
template <class T>
std::optional<T> readIndex(const ValueList& list, std::size_t index) {
    return index < list.size() ? readAs<T>(list[index]) : std::nullopt;
}

}  // namespace tarvo
