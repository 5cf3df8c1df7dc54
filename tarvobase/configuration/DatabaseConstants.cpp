#include "tarvobase/configuration/DatabaseConstants.h"

#include "platform/Files.h"
#include "platform/ProgrammingError.h"
#include "platform/Text.h"

namespace tarvo {

std::string DatabaseConstants::databaseLocation() const {
    auto home = CommonConfigration::sharedInstance().localDirectoryLocation.get();
    if (!home || home->empty()) {
        platform::reportProgrammingError("a database is named before localDirectoryLocation is set");
        return "";
    }
    auto folder = *home + "/Databases";
    if (!files::exists(folder)) static_cast<void>(files::createDirectories(folder));
    return folder;
}

std::string DatabaseConstants::databaseName() const {
    auto& configuration = CommonConfigration::sharedInstance();
    if (!configuration.authentication.get())
        platform::reportProgrammingError("the database of an account is named before authentication is set");
    return databaseName(configuration.getCurrentAccountID().value_or(""));
}

// Account ids come from outside. An id that could lead out of the folder is escaped, and so is one that looks escaped,
// so that two accounts never share a file. Ordinary ids stay as they are.
std::string DatabaseConstants::databaseName(const std::string& accountId) const {
    bool harmless = accountId.empty() || (files::pathComponent(accountId) && accountId.find('%') == std::string::npos);
    auto folder = databaseLocation();
    if (folder.empty()) return "";
    return folder + "/TarvoDatabaseForBrenUID" + (harmless ? accountId : text::percentEscape(accountId)) + ".sqlite";
}

}  // namespace tarvo
