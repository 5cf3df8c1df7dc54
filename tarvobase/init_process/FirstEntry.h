#pragma once

#include "tarvobase/network_layer/ParserProtocol.h"

namespace tarvo {

/// What the first entry of an answer brought, for a call about one thing. Fails as the answer, its entry or the rows of
/// the entry do; an answer without entries is `noData`.
template <class T, class Info>
Result<T, ParserError> firstEntry(ParserProtocol<T, Info>&& parser, const platform::Data& data) {
    auto answer = parser.parse(data);
    if (!answer) return answer.error();
    if (answer->result.empty()) return ParserError(ParserError::Case::noData);
    auto& entry = answer->result.front();
    if (!entry) return entry.error();
    return std::move(entry).value().data;
}

/// The first `count` columns of a row, when they are texts all.
inline std::optional<std::vector<std::string>> leadingTexts(const Value& row, std::size_t count) {
    auto columns = row.asList();
    if (!columns || columns->size() < count) return std::nullopt;
    std::vector<std::string> texts;
    for (std::size_t place = 0; place < count; ++place) {
        auto text = (*columns)[place].asText();
        if (!text) return std::nullopt;
        texts.push_back(*text);
    }
    return texts;
}

}  // namespace tarvo
