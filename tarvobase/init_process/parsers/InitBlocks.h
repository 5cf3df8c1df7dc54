#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/init_process/parsers/InitDownloadParser.h"

/// Readers of the blocks of the init answer. Each gets the block's positional data and gives nothing when it cannot be
/// read as a whole. A row that is too short takes empty texts for what it lacks, since a module or a user with a gap is
/// of more use than none; a row that is no list, or has no name or id, is left out. Rows that are all left out make the
/// block one of another shape, which cannot be read.
namespace tarvo {

struct InitTablesParser {
    /// Nothing when any entry is no text: a schema with a hole is none.
    static std::optional<std::vector<std::string>> parse(const ValueList& data);
};

struct InitDateTimeFormatParser {
    static std::optional<ParsedInitData::DateTimeFormat> parse(const ValueList& data);
};

struct InitModulesParser {
    /// A `position` that is no number counts as 0.
    static std::optional<std::vector<Module>> parse(const ValueList& data);
};

struct InitUserDetailsParser {
    /// The data are the row itself, or a list with one row.
    static std::optional<UserDetails> parse(const ValueList& data);
};

struct InitUsersParser {
    static std::optional<std::vector<User>> parse(const ValueList& data);
};

struct InitCompanyInfoParser {
    static std::optional<std::vector<CompanyInfo>> parse(const ValueList& data);
};

struct InitOrganisationParser {
    /// One row with a value of another type makes the whole list nothing.
    static std::optional<std::vector<Organisation>> parse(const ValueList& data);
};

struct InitSettingsParser {
    /// The data are the list itself, or a list with that list alone. Nothing when a module's row does not say which
    /// module it is about. A value that is neither a text nor a list of texts makes no setting.
    static std::optional<std::vector<Settings>> parse(const ValueList& data);
};

/// The only entry when it is a list, else the list itself.
const ValueList& singleRow(const ValueList& data);

}  // namespace tarvo
