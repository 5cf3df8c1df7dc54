#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/configuration/UserDefaults.h"

namespace tarvo {

/// The names of the settings about accounts. All of them are in the group `base`.
class UserAccountsConstantsProtocol : public virtual platform::Object {
public:
    std::string NumberOfUsers = "NumberOfUsers";
    std::string UserAuthtoken = "UserAuthtoken";
    std::string CurrentSelectedUser = "CurrentSelectedUser";
    std::string BaseGroup = "BaseGroup";
    std::string InitDownloadComplete = "InitDownloadComplete";
    std::string UserAuthtokens = "UserAuthtokens";
    std::string InitialProcessCompleteUsers = "InitialProcessCompleteUsers";
    std::string PersistenceMode = "PersistanceMode";
};
class UserAccountsConstants final : public UserAccountsConstantsProtocol {};

/// Answers at the launch of the application which accounts have finished their first download.
class AppLunchPersistanceProtocol : public virtual platform::Object {
public:
    /// Returns nullopt if no account has ever finished.
    virtual std::optional<std::vector<std::string>> userWithInitialDownloadComplete() const = 0;
    virtual bool isInitialDownloadComplete(const std::string& accountId) const = 0;
    /// Returns whether the database file of the account exists.
    virtual bool isDatabasePresentForUser(const std::string& with) const = 0;
};

class InitProcessCompletionPersistance : public virtual platform::Object {
public:
    /// Records that an account has finished. Two calls leave two entries.
    virtual void initDownloadCompleteForUser(const std::string& with) = 0;
    /// Removes one entry of the account.
    virtual void resetInitialDownload(const std::string& for_) = 0;
};

class PersistenceDataManagerProtocol : public virtual platform::Object {
public:
    /// Returns `offline` unless "online" is stored for the account.
    virtual PersistenceMode getPersistenceMode(const std::string& for_) const = 0;
    virtual void updatePersistenceMode(const std::string& for_, PersistenceMode to) = 0;
};

/// Stores facts about the accounts of this installation across launches. It may be used from any thread: each change
/// reads and writes its setting under one lock.
class UserAccountsManager final : public AppLunchPersistanceProtocol,
                                  public InitProcessCompletionPersistance,
                                  public PersistenceDataManagerProtocol {
public:
    explicit UserAccountsManager(
        std::shared_ptr<UserDefaultsProtocol> userDefaults,
        std::shared_ptr<UserAccountsConstantsProtocol> constants = std::make_shared<UserAccountsConstants>(),
        std::shared_ptr<BrenDatabaseConstants> databaseConstants = nullptr);

    /// Returns the instance of the process, which uses the settings suite of the configuration.
    static UserAccountsManager& userAccounts();

    /// These two are for the host; the library does not read them.
    Setting<int> numberOfUsers{0};
    Setting<std::string> currentSelectedUserBrenUID;

    std::optional<std::vector<std::string>> getLoggedInUsersBrenUID() const;
    std::string getCurrentBrenUID() const;
    bool hasBrenuid() const;

    std::optional<std::vector<std::string>> userWithInitialDownloadComplete() const override;
    bool isInitialDownloadComplete(const std::string& accountId) const override;
    /// Without `databaseConstants` this is a programming error and returns false.
    bool isDatabasePresentForUser(const std::string& with) const override;
    void initDownloadCompleteForUser(const std::string& with) override;
    void resetInitialDownload(const std::string& for_) override;
    PersistenceMode getPersistenceMode(const std::string& for_) const override;
    void updatePersistenceMode(const std::string& for_, PersistenceMode to) override;

private:
    std::shared_ptr<UserDefaultsProtocol> userDefaults_;
    std::shared_ptr<UserAccountsConstantsProtocol> constants_;
    std::shared_ptr<BrenDatabaseConstants> databaseConstants_;
};

/// Facts about the application's last run.
class AppState {
public:
    explicit AppState(std::shared_ptr<UserDefaultsProtocol> userDefaults) : userDefaults_(std::move(userDefaults)) {}
    /// Returns when the modules of an account were last synced, or nullopt if they never were.
    std::optional<std::chrono::sys_time<std::chrono::milliseconds>> getLastModulesSyncTime(
        const std::string& brenuid) const;

private:
    std::shared_ptr<UserDefaultsProtocol> userDefaults_;
};

}  // namespace tarvo
