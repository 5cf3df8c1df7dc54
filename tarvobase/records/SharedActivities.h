#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarvo {

class DatabaseAdapter;
class RecordIdAliases;

/// Tasks, events and calls lie in the table of their own module and in one that the three share, that of "Activities",
/// if the server has made it. Calendars and figures read the shared table, so a change that is made here is written to
/// both; nothing else would bring it there before the server does. May be used from any thread.
struct SharedActivities {
    static constexpr std::string_view moduleName = "Activities";

    static bool isActivity(std::string_view moduleName);
    /// Returns the modules whose tables hold a record of this module, its own first.
    static std::vector<std::string> modulesOf(DatabaseAdapter& databaseAdapter, const std::string& moduleName);
    /// Returns the modules whose records lie in the table of this one, itself first.
    static std::vector<std::string> modulesIn(const std::string& moduleName);
    /// Returns `RecordIdAliases::currentId` of a record in the table of this module, whichever its own module is.
    static std::string currentId(RecordIdAliases& aliases, const std::string& moduleName, const std::string& recordId);
};

}  // namespace tarvo
