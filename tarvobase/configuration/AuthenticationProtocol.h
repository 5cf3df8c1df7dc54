#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/Describe.h"
#include "platform/Object.h"

namespace tarvo {

/// The form of a token in the "Authorization" header: after the name of a scheme (`oauth`), or alone (`plain`).
enum class AuthenticationType { oauth = 0, plain = 1 };

template <>
struct EnumCases<AuthenticationType> {
    static constexpr EnumCase<AuthenticationType> cases[] = {{AuthenticationType::oauth, "oauth"},
                                                             {AuthenticationType::plain, "plain"}};
};

/// Knows which accounts are signed in and hands out their tokens. The host implements it. The library calls it from any
/// thread, also from several at a time. No operation may wait for the main queue.
class AuthenticationProtocol : public virtual platform::Object {
public:
    using TokenCompletion = std::function<void(std::optional<std::string> token)>;

    virtual AuthenticationType authenticationType() = 0;
    /// Returns the ids of all accounts that are signed in on this machine.
    virtual std::optional<std::vector<std::string>> loggedInUsers() = 0;
    /// Returns the id of the selected account, or nullopt if none is signed in.
    virtual std::optional<std::string> currentUser() = 0;
    /// Calls `completion` exactly once with the token of an account, or with nullopt if the account has none. The call
    /// may come at once or later, on any thread.
    virtual void authToken(const std::string& forUser, TokenCompletion completion) = 0;

    /// These two operations are for the host's own code; the library does not call them.
    virtual void signOut(const std::string& user) { static_cast<void>(user); }
    virtual void refreshToken(const std::string& forUser, TokenCompletion completion) {
        authToken(forUser, std::move(completion));
    }
};

}  // namespace tarvo
