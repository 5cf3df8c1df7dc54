#include "sandbox/SandboxAccounts.h"

#include <openssl/crypto.h>

namespace tarvo::sandbox {
namespace {

constexpr std::string_view scheme = "Nimbra-oauthtoken ";

std::string tokenOf(const Request& request) {
    std::string_view header = request.authorization;
    if (header.empty()) return request.parameter("authtoken").value_or("");
    return std::string(header.starts_with(scheme) ? header.substr(scheme.size()) : header);
}

// Takes the same time for every wrong token of one length.
bool sameSecret(std::string_view a, std::string_view b) {
    return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

}  // namespace

const Account* Accounts::of(const Request& request) const {
    auto token = tokenOf(request);
    if (token.empty()) return nullptr;
    for (const auto& account : accounts_)
        if (sameSecret(account.token, token)) return &account;
    return nullptr;
}

}  // namespace tarvo::sandbox
