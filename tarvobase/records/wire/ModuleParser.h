#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Value.h"

namespace tarvo {

/// The server's list of records as flat dictionaries with text keys.
struct ParsedRecords {
    std::vector<ValueMap> records;
    std::optional<std::string> moduleName;  ///< "Leads" or "Accounts" if the module's name contains their stem
};

/// Parses the server's form of records: a record is a list of entries, and an entry is a name, a value and, for a
/// lookup, its display text. Stateless, may be called from any thread. The host's settings are read once per call.
struct ModuleParser {
    /// Returns nullopt if `data` is not a list. Whatever is not a record, an entry or a usable value is left out, and
    /// the rest is kept.
    static std::optional<ParsedRecords> parseRecord(const Value* data, std::string_view forModule);
    static ParsedRecords parseRecord(const ValueList& data, std::string_view forModule);

    /// Returns a name as the parser writes it: with `CommonConfigration.modifySystemProperties`, "$se..." loses its
    /// "$", and any other leading "$" becomes "se_". Pass names of metadata and literal names through this before you
    /// compare them with the keys of a wire dictionary.
    static std::string systemKey(std::string_view name);
    static std::string systemKey(std::string_view name, bool modifySystemProperties);
};

}  // namespace tarvo
