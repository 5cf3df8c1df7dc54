#pragma once

#include "tarvobase/network_layer/ParserProtocol.h"

namespace tarvo {

/// Returns the value of the first entry of an answer, for calls about one thing. Fails if the answer, its entry or the
/// rows of the entry fail. An answer without entries is `noData`.
template <class T, class Info>
Result<T, ParserError> firstEntry(ParserProtocol<T, Info>&& parser, const platform::Data& data) {
    auto answer = parser.parse(data);
    if (!answer) return answer.error();
    if (answer->result.empty()) return ParserError(ParserError::Case::noData);
    auto& entry = answer->result.front();
    if (!entry) return entry.error();
    return std::move(entry).value().data;
}

/// Returns the rows of an entry as they came, or `noData` if the server says that there are none.
class RowsParser final : public ParserProtocol<ValueList, BaseResultInfo> {
public:
    Result<ValueList, ParserError> parseResult(const ValueList& rows, const BaseResultInfo& info) override {
        if (info.noData.value_or(false)) return ParserError(ParserError::Case::noData);
        return rows;
    }
};

/// Returns the rows of the first entry.
inline Result<ValueList, ParserError> firstRows(const platform::Data& data) { return firstEntry(RowsParser(), data); }

}  // namespace tarvo
