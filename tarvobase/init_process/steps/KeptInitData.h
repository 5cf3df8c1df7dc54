#pragma once

#include <optional>

namespace tarvo {

struct ParsedInitData;

/// The last answer of the init call in this process, with its account. From any thread.
struct KeptInitData {
    /// Returns the kept answer if it belongs to the current account and the server sent it within the last minute.
    static std::optional<ParsedInitData> reusable();
    /// Replaces the kept answer with one of the current account.
    static void keep(ParsedInitData data);
};

}  // namespace tarvo
