#include "tarvobase/configuration/DatabaseConstants.h"

#include "platform/Files.h"
#include "platform/Text.h"

namespace tarvo {

std::string DatabaseConstants::databaseLocation() const {
    auto folder = CommonConfigration::sharedInstance().localDirectoryLocation.get().value_or("") + "/Databases";
    if (!files::exists(folder)) static_cast<void>(files::createDirectories(folder));
    return folder;
}

std::string DatabaseConstants::databaseName() const {
    return databaseName(CommonConfigration::sharedInstance().getCurrentAccountID().value_or(""));
}

// Account ids come from outside. An id that could lead out of the folder is escaped, and so is one that looks escaped,
// so that two accounts never share a file. Ordinary ids stay as they are.
std::string DatabaseConstants::databaseName(const std::string& accountId) const {
    bool harmless = accountId.empty() || (files::pathComponent(accountId) && accountId.find('%') == std::string::npos);
    return databaseLocation() + "/TarvoDatabaseForBrenUID" + (harmless ? accountId : text::percentEscape(accountId)) +
           ".sqlite";
}

}  // namespace tarvo
