#pragma once

#include <new>
#include <optional>
#include <utility>

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

    /// Returns what `parse` makes of an answer, or `otherwise` if memory runs out: an answer that is too large for it
    /// is one that cannot be used, and ends its request as such.
    template <class Parsed, class Parse>
    static Parsed withinMemory(Parsed otherwise, Parse&& parse) {
        try {
            return parse();
        } catch (const std::bad_alloc&) {
            logOutOfMemory();
            return otherwise;
        }
    }

private:
    static void logOutOfMemory();
};

}  // namespace tarvo
