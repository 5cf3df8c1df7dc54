#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/ThreadSafety.h"
#include "tarvobase/configuration/AuthenticationProtocol.h"

namespace tarvo::host {

/// The accounts that are signed in to this process, kept in memory only. Any thread.
class Accounts final : public AuthenticationProtocol {
public:
    struct Account {
        std::optional<std::string> token;
        AuthenticationType authenticationType = AuthenticationType::oauth;
    };

    /// Signs an account in, or replaces its token, and selects it.
    void signIn(const std::string& id, Account account);
    /// Selects an account that is signed in. Returns false if it is not.
    bool select(const std::string& id);

    /// Keeps back every token that is asked for from now on, as an account service does that answers late.
    void holdTokens();
    /// Hands out the tokens that were kept back, and later ones at once.
    void releaseTokens();
    /// Returns how many tokens are kept back.
    std::size_t heldTokens();

    /// Returns the type of the selected account.
    AuthenticationType authenticationType() override;
    std::optional<std::vector<std::string>> loggedInUsers() override;
    std::optional<std::string> currentUser() override;
    void authToken(const std::string& forUser, TokenCompletion completion) override;
    void signOut(const std::string& user) override;

private:
    platform::Mutex mutex_;
    std::map<std::string, Account> accounts_ TARVO_GUARDED_BY(mutex_);
    std::optional<std::string> current_ TARVO_GUARDED_BY(mutex_);
    bool isHolding_ TARVO_GUARDED_BY(mutex_) = false;
    std::vector<std::function<void()>> held_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo::host
