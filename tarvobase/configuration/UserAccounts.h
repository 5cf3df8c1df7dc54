#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/configuration/UserDefaults.h"

namespace tarvo {

/// Names of the settings that speak of accounts; all live in the group `base`.
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

/// Which accounts have finished their first download, as app launch asks it.
class AppLunchPersistanceProtocol : public virtual platform::Object {
public:
    /// Absent when no account ever finished.
    virtual std::optional<std::vector<std::string>> userWithInitialDownloadComplete() const = 0;
    virtual bool isInitialDownloadComplete(const std::string& accountId) const = 0;
    /// Whether the database file of that account exists.
    virtual bool isDatabasePresentForUser(const std::string& with) const = 0;
};

class InitProcessCompletionPersistance : public virtual platform::Object {
public:
    /// Notes that an account has finished. Twice leaves two notes.
    virtual void initDownloadCompleteForUser(const std::string& with) = 0;
    /// Takes one note back.
    virtual void resetInitialDownload(const std::string& for_) = 0;
};

class PersistenceDataManagerProtocol : public virtual platform::Object {
public:
    /// `offline` unless "online" was stored for the account.
    virtual PersistenceMode getPersistenceMode(const std::string& for_) const = 0;
    virtual void updatePersistenceMode(const std::string& for_, PersistenceMode to) = 0;
};

/// What is known of the accounts of this installation across launches. Safe from any thread: each change reads and
/// writes its setting under one lock.
class UserAccountsManager final : public AppLunchPersistanceProtocol,
                                  public InitProcessCompletionPersistance,
                                  public PersistenceDataManagerProtocol {
public:
    explicit UserAccountsManager(
        std::shared_ptr<UserDefaultsProtocol> userDefaults,
        std::shared_ptr<UserAccountsConstantsProtocol> constants = std::make_shared<UserAccountsConstants>(),
        std::shared_ptr<BrenDatabaseConstants> databaseConstants = nullptr);

    /// The instance of the process, on the settings suite of the configuration.
    static UserAccountsManager& userAccounts();

    /// For the host; the library reads neither.
    Setting<int> numberOfUsers{0};
    Setting<std::string> currentSelectedUserBrenUID;

    std::optional<std::vector<std::string>> getLoggedInUsersBrenUID() const;
    std::string getCurrentBrenUID() const;
    bool hasBrenuid() const;

    std::optional<std::vector<std::string>> userWithInitialDownloadComplete() const override;
    bool isInitialDownloadComplete(const std::string& accountId) const override;
    /// False, and a programming error, without `databaseConstants`.
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

/// Facts of the application's last run.
class AppState {
public:
    explicit AppState(std::shared_ptr<UserDefaultsProtocol> userDefaults) : userDefaults_(std::move(userDefaults)) {}
    /// When the modules of an account were last synced; nothing when never.
    std::optional<std::chrono::sys_time<std::chrono::milliseconds>> getLastModulesSyncTime(
        const std::string& brenuid) const;

private:
    std::shared_ptr<UserDefaultsProtocol> userDefaults_;
};

}  // namespace tarvo
