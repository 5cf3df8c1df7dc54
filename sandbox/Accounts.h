#pragma once

#include <string>
#include <vector>

#include "sandbox/Message.h"

namespace tarvo::sandbox {

/// Who may call: an account of the product with one token.
struct Account {
    std::string id;
    std::string token;
};

/// The account that exists when the command line names none, and that `--token` gives a further token.
inline constexpr const char* defaultAccountId = "700100200";
inline constexpr const char* defaultToken = "sandbox-token";

/// The token check. Several tokens may lead to one account. Immutable, any thread.
class Accounts {
public:
    explicit Accounts(std::vector<Account> accounts) : accounts_(std::move(accounts)) {}

    const std::vector<Account>& all() const { return accounts_; }
    /// The account of the request's token: in the header "Authorization", behind "Nimbra-oauthtoken " or alone, or,
    /// when there is no such header, in the parameter "authtoken". Null for a wrong or missing one.
    const Account* of(const Request& request) const;

private:
    std::vector<Account> accounts_;
};

}  // namespace tarvo::sandbox
