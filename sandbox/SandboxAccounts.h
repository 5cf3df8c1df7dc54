#pragma once

#include <string>
#include <vector>

#include "sandbox/Message.h"

namespace tarvo::sandbox {

/// An account of the product with one token, who may call.
struct Account {
    std::string id;
    std::string token;
};

/// This account exists when the command line names none, and `--token` gives it a further token.
inline constexpr const char* defaultAccountId = "700100200";
inline constexpr const char* defaultToken = "sandbox-token";

/// Finds the account of a request by its token. Several tokens may belong to one account. Immutable and safe to use
/// from any thread.
class Accounts {
public:
    explicit Accounts(std::vector<Account> accounts) : accounts_(std::move(accounts)) {}

    const std::vector<Account>& all() const { return accounts_; }
    /// Returns the account of the request's token, or null if the token is wrong or missing. The token stands in the
    /// header "Authorization", after "Nimbra-oauthtoken " or alone, or, when there is no such header, in the parameter
    /// "authtoken".
    const Account* of(const Request& request) const;

private:
    std::vector<Account> accounts_;
};

}  // namespace tarvo::sandbox
