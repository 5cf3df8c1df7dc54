#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/init_process/InitDownloadParser.h"

/// Readers of the blocks of the init answer. Each gets the block's positional data and gives nothing when it cannot be
/// read as a whole. A row that is too short takes empty texts for what it lacks, since a module or a user with a gap is
/// of more use than none; a row that is no list is left out.
namespace tarvo {

struct InitTablesParser {
    /// Nothing when any entry is no text: a schema with a hole is none.
    static std::optional<std::vector<std::string>> parse(const ValueList& data);
};

struct InitDateTimeFormatParser {
    static std::optional<ParsedInitData::DateTimeFormat> parse(const ValueList& data);
};

struct InitModulesParser {
    /// A `position` that is no number counts as 0. A row without a name is left out.
    static std::optional<std::vector<Module>> parse(const ValueList& data);
};

}  // namespace tarvo
