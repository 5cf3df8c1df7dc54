#pragma once

#include <optional>

#include "tarvobase/init_process/parsers/InitDownloadParser.h"

namespace tarvo {

/// The last answer of the init call in this process and whose it is. From any thread.
struct KeptInitData {
    /// What was kept for the current account, if the server answered it within the last minute.
    static std::optional<ParsedInitData> reusable();
    /// Keeps an answer of the current account in place of the one before.
    static void keep(ParsedInitData data);
};

}  // namespace tarvo
