#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/configuration/AuthenticationProtocol.h"

namespace tarvo::host {

/// The accounts that were signed in to this process, in memory alone. Any thread.
class Accounts final : public AuthenticationProtocol {
public:
    struct Account {
        std::optional<std::string> token;
        AuthenticationType authenticationType = AuthenticationType::oauth;
    };

    /// Signs an account in, or replaces what is known of it, and selects it.
    void signIn(const std::string& id, Account account);
    /// Selects an account that is signed in; false when it is not.
    bool select(const std::string& id);

    /// That of the selected account.
    AuthenticationType authenticationType() override;
    std::optional<std::vector<std::string>> loggedInUsers() override;
    std::optional<std::string> currentUser() override;
    void authToken(const std::string& forUser, TokenCompletion completion) override;
    void signOut(const std::string& user) override;

private:
    std::mutex mutex_;
    std::map<std::string, Account> accounts_;
    std::optional<std::string> current_;
};

}  // namespace tarvo::host
