#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/Describe.h"
#include "platform/Object.h"

namespace tarvo {

/// How the token stands in the "Authorization" header: behind a word, or alone.
enum class AuthenticationType { oauth = 0, plain = 1 };

template <>
struct EnumCases<AuthenticationType> {
    static constexpr EnumCase<AuthenticationType> cases[] = {{AuthenticationType::oauth, "oauth"},
                                                             {AuthenticationType::plain, "plain"}};
};

/// Who is signed in, and their tokens. The host implements it; the library calls it from any thread, also several at a
/// time. No operation may wait for the main queue.
class AuthenticationProtocol : public virtual platform::Object {
public:
    using TokenCompletion = std::function<void(std::optional<std::string> token)>;

    virtual AuthenticationType authenticationType() = 0;
    /// Ids of all accounts signed in on this machine.
    virtual std::optional<std::vector<std::string>> loggedInUsers() = 0;
    /// Id of the selected account.
    virtual std::optional<std::string> currentUser() = 0;
    /// Gives the token of an account, now or later, on any thread, exactly once; nothing when there is none.
    virtual void authToken(const std::string& forUser, TokenCompletion completion) = 0;

    /// The two operations that hosts offer each other; the library calls neither.
    virtual void signOut(const std::string& user) { static_cast<void>(user); }
    virtual void refreshToken(const std::string& forUser, TokenCompletion completion) {
        authToken(forUser, std::move(completion));
    }
};

}  // namespace tarvo
