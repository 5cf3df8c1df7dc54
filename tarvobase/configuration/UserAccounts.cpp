#include "tarvobase/configuration/UserAccounts.h"

#include <algorithm>
#include <cmath>

#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/ProcessState.h"
#include "platform/ProgrammingError.h"
#include "platform/Text.h"
#include "tarvobase/configuration/DatabaseConstants.h"

namespace tarvo {

namespace {

constexpr std::string_view moduleSyncTime = "ModuleSyncTime";

std::vector<std::string> textsOf(const ValueList& list) {
    std::vector<std::string> texts;
    for (auto& item : list)
        if (auto text = item.asText()) texts.push_back(*text);
    return texts;
}

struct SharedUserAccounts {
    std::shared_ptr<UserAccountsManager> manager = std::make_shared<UserAccountsManager>(
        std::make_shared<BrenUserDefaults>(), std::make_shared<UserAccountsConstants>(),
        std::make_shared<DatabaseConstants>());
};

}  // namespace

UserAccountsManager::UserAccountsManager(std::shared_ptr<UserDefaultsProtocol> userDefaults,
                                         std::shared_ptr<UserAccountsConstantsProtocol> constants,
                                         std::shared_ptr<BrenDatabaseConstants> databaseConstants)
    : userDefaults_(std::move(userDefaults)),
      constants_(std::move(constants)),
      databaseConstants_(std::move(databaseConstants)) {}

UserAccountsManager& UserAccountsManager::userAccounts() {
    return *platform::ProcessState::current().get<SharedUserAccounts>().manager;
}

std::optional<std::vector<std::string>> UserAccountsManager::getLoggedInUsersBrenUID() const {
    auto authentication = CommonConfigration::sharedInstance().authentication.get();
    return authentication ? authentication->loggedInUsers() : std::nullopt;
}

std::string UserAccountsManager::getCurrentBrenUID() const {
    auto authentication = CommonConfigration::sharedInstance().authentication.get();
    return authentication ? authentication->currentUser().value_or("") : "";
}

bool UserAccountsManager::hasBrenuid() const {
    auto authentication = CommonConfigration::sharedInstance().authentication.get();
    return authentication && authentication->currentUser();
}

std::optional<std::vector<std::string>> UserAccountsManager::userWithInitialDownloadComplete() const {
    auto list = userDefaults_->arrayForKey(constants_->InitialProcessCompleteUsers, UserDefaultsGroup::base());
    return list ? std::optional(textsOf(*list)) : std::nullopt;
}

bool UserAccountsManager::isInitialDownloadComplete(const std::string& accountId) const {
    auto users = userWithInitialDownloadComplete();
    return users && text::contains(*users, accountId);
}

bool UserAccountsManager::isDatabasePresentForUser(const std::string& with) const {
    if (!databaseConstants_) {
        platform::reportProgrammingError("isDatabasePresentForUser was called without databaseConstants");
        return false;
    }
    return files::exists(databaseConstants_->databaseName(with));
}

void UserAccountsManager::initDownloadCompleteForUser(const std::string& with) {
    userDefaults_->update(constants_->InitialProcessCompleteUsers, UserDefaultsGroup::base(),
                          [&](const Value& present) {
                              auto users = present.asList() ? *present.asList() : ValueList();
                              users.push_back(with);
                              return Value(std::move(users));
                          });
}

void UserAccountsManager::resetInitialDownload(const std::string& for_) {
    if (!isInitialDownloadComplete(for_)) return;
    userDefaults_->update(constants_->InitialProcessCompleteUsers, UserDefaultsGroup::base(),
                          [&](const Value& present) {
                              auto users = present.asList() ? *present.asList() : ValueList();
                              auto first = std::find(users.begin(), users.end(), Value(for_));
                              if (first != users.end()) users.erase(first);
                              return Value(std::move(users));
                          });
}

PersistenceMode UserAccountsManager::getPersistenceMode(const std::string& for_) const {
    auto modes = userDefaults_->dictionaryForKey(constants_->PersistenceMode, UserDefaultsGroup::base());
    auto mode = modes ? modes->find(for_) : nullptr;
    auto text = mode ? mode->asText() : nullptr;
    return text ? fromRawText<PersistenceMode>(*text).value_or(PersistenceMode::offline) : PersistenceMode::offline;
}

void UserAccountsManager::updatePersistenceMode(const std::string& for_, PersistenceMode to) {
    userDefaults_->update(constants_->PersistenceMode, UserDefaultsGroup::base(), [&](const Value& present) {
        auto modes = present.asMap() ? *present.asMap() : ValueMap();
        modes.set(for_, rawText(to));
        return Value(std::move(modes));
    });
    platform::log(platform::LogLevel::progress, "configuration",
                  "PersistanceMode updated for `" + for_ + "` to `" + std::string(rawText(to)) + "`");
}

std::optional<std::chrono::sys_time<std::chrono::milliseconds>> AppState::getLastModulesSyncTime(
    const std::string& brenuid) const {
    auto stored = userDefaults_->stringForKey(std::string(moduleSyncTime), UserDefaultsGroup::other(brenuid));
    auto seconds = stored ? text::toReal(*stored) : std::nullopt;
    constexpr double latest = 253402300799;  // the end of the year 9999; milliseconds of later times would not fit
    if (!seconds || std::abs(*seconds) > latest) return std::nullopt;
    return std::chrono::sys_time<std::chrono::milliseconds>(std::chrono::milliseconds(std::llround(*seconds * 1000)));
}

}  // namespace tarvo
