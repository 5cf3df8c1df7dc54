#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/init_process/parsers/InitDownloadParser.h"

/// Parsers of the blocks of the init answer. Each parser takes the block's positional data and returns nullopt if the
/// block as a whole cannot be read. A row that is too short reads as if its missing columns were empty, since a module
/// or a user with a gap is of more use than none. A row that is not a list, or that has no name or id, is left out. A
/// block whose rows are all left out has an unknown shape and cannot be read.
namespace tarvo {

struct InitTablesParser {
    /// Returns nullopt if any entry is not a text: a schema with a hole is not usable.
    static std::optional<std::vector<std::string>> parse(const ValueList& data);
};

struct InitDateTimeFormatParser {
    static std::optional<ParsedInitData::DateTimeFormat> parse(const ValueList& data);
};

struct InitModulesParser {
    /// A `position` that is not a number counts as 0.
    static std::optional<std::vector<Module>> parse(const ValueList& data);
};

struct InitUserDetailsParser {
    /// The data are the row itself, or a list that contains only that row.
    static std::optional<UserDetails> parse(const ValueList& data);
};

struct InitUsersParser {
    static std::optional<std::vector<User>> parse(const ValueList& data);
};

struct InitCompanyInfoParser {
    static std::optional<std::vector<CompanyInfo>> parse(const ValueList& data);
};

struct InitOrganisationParser {
    /// Returns nullopt if any row has a value of another type.
    static std::optional<std::vector<Organisation>> parse(const ValueList& data);
};

/// Returns the only entry if it is a list, otherwise the list itself.
const ValueList& singleRow(const ValueList& data);

}  // namespace tarvo
