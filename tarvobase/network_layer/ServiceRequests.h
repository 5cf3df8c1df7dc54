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

/// The functions that the two bases of network services share: they build a request and add a token to it.
namespace tarvo {

/// The adapter of a service. It is made at the first read, which may come from several threads at once, unless one was
/// set before.
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

/// Returns the request with the fixed headers, the header of the organisation if there is one, and a time-out of 60
/// seconds. Returns nullopt if the text is not a URL.
std::optional<URLRequest> getURLRequest(const std::string& url, HTTPMethod method, std::optional<Data> body,
                                        const Scope& scope);

/// Returns the value of the "Authorization" header for a token.
std::string authorizationText(AuthenticationType type, const std::string& token);

/// Adds headers. Each replaces the header of its name.
void addHeaders(bren::Headers& headers, const bren::Headers& more);

/// Adds the build id and the token to the headers of an upload. A plain token goes into the parameters instead.
void authorize(NetworkUpload& upload, AuthenticationType type, const std::string& token);

/// Adds "orgid" if the configuration allows it and an organisation is chosen. Absent parameters stay absent.
void addOrganisation(std::optional<ValueMap>& params, CurrentOrganisationProtocol& organisations);

// The failures of requests that were not sent.
NetworkError invalidURL();
NetworkError notSent(std::string why);
/// The failure of work whose account, organisation or database is no longer in force.
NetworkError outdated();

/// Appends "name=value" pairs to a URL, after "?" or "&".
void appendQuery(std::string& url, const std::string& query);

/// The host's answer to a request for the token of the current account.
struct TokenAnswer {
    AuthenticationType type;
    std::string user;
    std::optional<std::string> token;  ///< absent when the account has none
};

/// The time that a host may take to hand out a token. It is long enough for a host that shows a sign-in window first,
/// and ends the wait of a screen if the host never answers.
inline constexpr std::chrono::seconds tokenTimeLimit{60};

/// Asks for the token of the current user. Calls `work` exactly once, with the answer or with the reason why the
/// request must not be sent: there is no authentication, the scope is outdated (also if this happened while the token
/// was on its way), or `tokenTimeLimit` has passed.
void withToken(const Scope& scope, std::function<void(Result<TokenAnswer, NetworkError>)> work);

/// Returns a completion that checks the scope before it calls the given one. If the scope is outdated, the answer loses
/// its body and becomes the failure `outdated`, so that nobody stores or shows it, and one line is logged.
NetworkCompletion guarded(const Scope& scope, NetworkCompletion completion);

/// Returns `read(item)` for each item, in their order. Calls about several things send such lists as parameters.
template <class Item, class Read>
ValueList listOf(const std::vector<Item>& items, Read read) {
    ValueList list;
    list.reserve(items.size());
    for (auto& item : items) list.emplace_back(std::invoke(read, item));
    return list;
}

/// Logs the names of the headers, but not their values, since one of them is the token.
void logHeaders(const URLRequest& request);

}  // namespace service
}  // namespace tarvo
