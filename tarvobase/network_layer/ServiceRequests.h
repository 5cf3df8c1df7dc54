#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/configuration/AuthenticationProtocol.h"
#include "tarvobase/configuration/CurrentOrganisation.h"
#include "tarvobase/network_layer/NetworkAdapter.h"

/// What the two bases of network services share: how a request is built, and how a token gets into it.
namespace tarvo {

/// The adapter of a service: made at the first read, which may come from several threads at once, or set before it.
class LazyNetworkAdapter {
public:
    std::shared_ptr<NetworkAdapter> getOr(std::shared_ptr<NetworkAdapter> (*make)()) {
        std::lock_guard lock(mutex_);
        if (!adapter_) adapter_ = make();
        return adapter_;
    }
    void set(std::shared_ptr<NetworkAdapter> adapter) {
        std::lock_guard lock(mutex_);
        adapter_ = std::move(adapter);
    }

private:
    std::mutex mutex_;
    std::shared_ptr<NetworkAdapter> adapter_;
};

namespace service {

inline constexpr std::string_view HEADER_AUTHORIZATION = "Authorization";
inline constexpr std::string_view HEADER_VALUE_OAUTHTOKEN = "Nimbra-oauthtoken";
inline constexpr std::string_view HEADER_APP_BUILDID = "x-app-buildid";
inline constexpr std::string_view HEADER_ORGID = "X-CRM-ORG";
inline constexpr std::string_view PARAM_ORGID = "orgid";
inline constexpr std::string_view PARAM_AUTHTOKEN = "authtoken";

/// The request with the fixed headers and a time-out of 60 seconds; nothing when the text is no URL.
std::optional<URLRequest> getURLRequest(const std::string& url, HTTPMethod method, std::optional<Data> body);

/// Value of the "Authorization" header for a token.
std::string authorizationText(AuthenticationType type, const std::string& token);

/// Puts build and token of an upload where they belong: into its headers, a plain token into its parameters.
void authorize(NetworkUpload& upload, AuthenticationType type, const std::string& token);

/// Adds "orgid" when the configuration allows it and there is an organisation. Absent parameters stay absent.
void addOrganisation(std::optional<ValueMap>& params, CurrentOrganisationProtocol& organisations);

/// The failures of requests that never went out.
NetworkError invalidURL();
NetworkError notSent(std::string why);

/// Puts "name=value" pairs behind a URL, after "?" or "&" as it needs.
void appendQuery(std::string& url, const std::string& query);

/// Asks for the current user's token. Calls `work` exactly once, with the user and what was given, or does nothing and
/// answers false when nobody can be asked.
bool withToken(std::function<void(AuthenticationProtocol& authentication, const std::string& user,
                                  const std::optional<std::string>& token)>
                   work);

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
