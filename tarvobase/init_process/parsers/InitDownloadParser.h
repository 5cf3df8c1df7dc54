#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Data.h"
#include "tarvobase/value_objects/account/CompanyInfo.h"
#include "tarvobase/value_objects/account/Organisation.h"
#include "tarvobase/value_objects/account/User.h"
#include "tarvobase/value_objects/account/UserDetails.h"
#include "tarvobase/value_objects/module/Module.h"
#include "tarvobase/value_objects/module/Settings.h"

namespace tarvo {

/// The content of one init answer. A block that is missing or cannot be read is absent; a block with an empty list is
/// an empty list.
struct ParsedInitData {
    struct DateTimeFormat {
        std::string dateFormat;
        std::string timeFormat;
    };

    std::optional<std::vector<std::string>> createTableQueries;
    std::optional<DateTimeFormat> dateTimeFormat;
    std::optional<std::vector<Module>> modules;
    std::optional<UserDetails> userDetails;
    std::optional<std::vector<User>> users;
    std::optional<std::vector<Settings>> settings;
    std::optional<std::vector<CompanyInfo>> companyInfo;
    std::optional<std::vector<Organisation>> organisations;
    std::uint64_t responseTime = 0;  ///< seconds since 1970, by the server's clock
};

/// Parses the answer of the init call: a list of blocks, each with its own positional layout.
struct InitDownloadParser {
    /// Returns nullopt if the body is not an envelope with a result.
    static std::optional<ParsedInitData> parseInitData(const platform::Data& data);
};

}  // namespace tarvo
