#pragma once

#include <optional>

#include "platform/Data.h"
#include "platform/JsonDocument.h"
#include "platform/Value.h"

namespace tarvo {

/// Reads the body of an answer as JSON. Bytes that are not UTF-8 become U+FFFD, with a log line: a server that cuts a
/// text within a character must not cost the whole answer.
struct AnswerBody {
    /// Returns nullopt if the body is not JSON otherwise.
    static std::optional<json::Document> document(const platform::Data& body);
    static std::optional<Value> value(const platform::Data& body);
};

}  // namespace tarvo
