#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Value.h"

namespace tarvo {

/// What the server's list of records becomes: flat dictionaries of text keys.
struct ParsedRecords {
    std::vector<ValueMap> records;
    std::optional<std::string> moduleName;  ///< "Leads" or "Accounts" when the module's text holds their stem
};

/// Reads the server's form of records: a record is a list of entries, an entry a name, a value and, for a lookup, what
/// is shown for it. Stateless; from any thread. The host's settings are read once a call.
struct ModuleParser {
    /// Nothing for no list. What is no record, no entry or no usable value is left out, never the rest.
    static std::optional<ParsedRecords> parseRecord(const Value* data, std::string_view forModule);
    static ParsedRecords parseRecord(const ValueList& data, std::string_view forModule);

    /// A name as the parser writes it: with `CommonConfigration.modifySystemProperties` "$se..." loses its "$", and
    /// another leading "$" becomes "se_". Names of metadata and literal names go through this before they are compared
    /// with a wire dictionary's.
    static std::string systemKey(std::string_view name);
    static std::string systemKey(std::string_view name, bool modifySystemProperties);
};

}  // namespace tarvo
