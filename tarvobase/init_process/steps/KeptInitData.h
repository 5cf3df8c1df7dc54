#pragma once

#include <optional>

namespace tarvo {

struct ParsedInitData;
struct Scope;

/// The last usable answer of the init call in this process, with its account and organisation. From any thread.
struct KeptInitData {
    /// Returns the kept answer if it belongs to the account and organisation of the scope and the server sent it within
    /// the last minute.
    static std::optional<ParsedInitData> reusable(const Scope& scope);
    /// Replaces the kept answer. Keeps an answer without tables for nobody, so that a second attempt asks the server
    /// again.
    static void keep(const Scope& scope, ParsedInitData data);
};

}  // namespace tarvo
