#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Result.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/configuration/AuthenticationProtocol.h"
#include "tarvobase/configuration/CurrentOrganisation.h"
#include "tarvobase/configuration/Scope.h"
#include "tarvobase/network_layer/NetworkAdapter.h"

/// What the two bases of network services share: how a request is built, and how a token gets into it.
namespace tarvo {

/// The adapter of a service: made at the first read, which may come from several threads at once, or set before it.
class LazyNetworkAdapter {
public:
    std::shared_ptr<NetworkAdapter> getOr(std::shared_ptr<NetworkAdapter> (*make)()) {
        platform::MutexLock lock(mutex_);
        if (!adapter_) adapter_ = make();
        return adapter_;
    }
    void set(std::shared_ptr<NetworkAdapter> adapter) {
        platform::MutexLock lock(mutex_);
        adapter_ = std::move(adapter);
    }

private:
    platform::Mutex mutex_;
    std::shared_ptr<NetworkAdapter> adapter_ TARVO_GUARDED_BY(mutex_);
};

namespace service {

inline constexpr std::string_view HEADER_AUTHORIZATION = "Authorization";
inline constexpr std::string_view HEADER_VALUE_OAUTHTOKEN = "Nimbra-oauthtoken";
inline constexpr std::string_view HEADER_APP_BUILDID = "x-app-buildid";
inline constexpr std::string_view HEADER_ORGID = "X-CRM-ORG";
inline constexpr std::string_view PARAM_ORGID = "orgid";
inline constexpr std::string_view PARAM_AUTHTOKEN = "authtoken";

/// Returns the request with the fixed headers, that of the organisation if there is one, and a time-out of 60 seconds.
/// Returns nullopt if the text is not a URL.
std::optional<URLRequest> getURLRequest(const std::string& url, HTTPMethod method, std::optional<Data> body,
                                        const std::string& organisation);

/// Returns the value of the "Authorization" header for a token.
std::string authorizationText(AuthenticationType type, const std::string& token);

/// Puts build and token of an upload where they belong: into its headers, a plain token into its parameters.
void authorize(NetworkUpload& upload, AuthenticationType type, const std::string& token);

/// Adds "orgid" when the configuration allows it and there is an organisation. Absent parameters stay absent.
void addOrganisation(std::optional<ValueMap>& params, CurrentOrganisationProtocol& organisations);

/// The failures of requests that never went out.
NetworkError invalidURL();
NetworkError notSent(std::string why);
/// The failure of work that belongs to an account, organisation or database which is no longer in force.
NetworkError outdated();

/// Appends "name=value" pairs to a URL, after "?" or "&" as it needs.
void appendQuery(std::string& url, const std::string& query);

/// What the host answered for the account at work.
struct TokenAnswer {
    AuthenticationType type;
    std::string user;
    std::optional<std::string> token;  ///< absent when the account has none
};

/// How long a host may take to give a token. A host that shows a sign-in window first is slow; one that never answers
/// must not keep a screen waiting.
inline constexpr std::chrono::seconds tokenTimeLimit{60};

/// Asks for the token of the current user. Calls `work` exactly once: with the answer, or with the reason why the
/// request must not go out. That is the case without authentication, once the scope is outdated, also while the token
/// was on its way, and after `tokenTimeLimit`.
void withToken(const Scope& scope, std::function<void(Result<TokenAnswer, NetworkError>)> work);

/// Returns the completion with a guard before it: an answer to work whose scope is outdated loses its body and becomes
/// the failure `outdated`, with one log line, so that nobody stores or shows it.
NetworkCompletion guarded(const Scope& scope, NetworkCompletion completion);

/// `read(item)` of each, in their order. Calls about several things send such lists side by side.
template <class Item, class Read>
ValueList listOf(const std::vector<Item>& items, Read read) {
    ValueList list;
    list.reserve(items.size());
    for (auto& item : items) list.emplace_back(std::invoke(read, item));
    return list;
}

/// Names of the headers, never their values: one of them is the token.
void logHeaders(const URLRequest& request);

}  // namespace service
}  // namespace tarvo
