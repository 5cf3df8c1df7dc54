#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tarvobase/configuration/AuthenticationProtocol.h"

/// What an application has anyway: a sign-in, a key ring and a window. Here they are environment variables and standard
/// output.
namespace example {

inline std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

/// One account, whose token does not change.
class MySignIn final : public tarvo::AuthenticationProtocol {
public:
    tarvo::AuthenticationType authenticationType() override { return tarvo::AuthenticationType::oauth; }
    std::optional<std::vector<std::string>> loggedInUsers() override { return std::vector{variable("CRM_ACCOUNT")}; }
    std::optional<std::string> currentUser() override { return variable("CRM_ACCOUNT"); }
    void authToken(const std::string&, TokenCompletion completion) override { completion(variable("CRM_TOKEN")); }
};

inline std::string passphraseOfTheKeyRing() { return variable("CRM_PASSPHRASE"); }

inline int fail(const std::string& why) {
    std::fprintf(stderr, "%s\n", why.c_str());
    return 1;
}
inline void show(const std::string& line) { std::printf("%s\n", line.c_str()); }

}  // namespace example
