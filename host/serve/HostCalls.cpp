#include "host/serve/HostCalls.h"

#include <chrono>
#include <memory>

#include "bridge/Topics.h"
#include "host/InitStep.h"
#include "host/serve/ConfigFields.h"
#include "host/serve/HostMetadataCalls.h"
#include "host/serve/HostQueueCalls.h"
#include "host/serve/HostRecordCalls.h"
#include "host/serve/HostSettingsCalls.h"
#include "host/serve/HostSyncCalls.h"
#include "host/serve/HostTransactionCalls.h"
#include "platform/Clock.h"
#include "platform/dates/LocalZone.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/download/Downloadable.h"

namespace tarvo {

template <>
struct EnumCases<host::Host::OpeningFailure::Kind> {
    using Kind = host::Host::OpeningFailure::Kind;
    static constexpr EnumCase<Kind> cases[] = {{Kind::wrongPassphrase, "wrongPassphrase"},
                                               {Kind::notEncrypted, "notEncrypted"},
                                               {Kind::damaged, "damaged"},
                                               {Kind::cannotOpen, "cannotOpen"},
                                               {Kind::other, "other"}};
};

}  // namespace tarvo

namespace tarvo::host {

namespace {

using bridge::CallPtr;
using bridge::Registry;
using platform::Clock;
using platform::Secret;

struct NoRequest {
    static constexpr auto fields() { return describe(); }
};

struct OpenRequest {
    std::optional<std::string> passphrase;
    static constexpr auto fields() { return describe(field("passphrase", &OpenRequest::passphrase)); }
};

struct InitRequest {
    bool holdInput = true;
    static constexpr auto fields() { return describe(optionalField("holdInput", &InitRequest::holdInput)); }
};

struct AccountRequest {
    std::string account;
    std::optional<std::string> token;
    AuthenticationType authenticationType = AuthenticationType::oauth;
    static constexpr auto fields() {
        return describe(field("account", &AccountRequest::account), field("token", &AccountRequest::token),
                        optionalField("authenticationType", &AccountRequest::authenticationType));
    }
};

struct TokensRequest {
    std::optional<bool> hold;
    static constexpr auto fields() { return describe(field("hold", &TokensRequest::hold)); }
};

struct ClockRequest {
    std::optional<std::int64_t> set;      // milliseconds since 1970
    std::optional<std::int64_t> advance;  // milliseconds
    bool free = false;
    std::optional<std::string> zone;
    static constexpr auto fields() {
        return describe(field("set", &ClockRequest::set), field("advance", &ClockRequest::advance),
                        optionalField("free", &ClockRequest::free), field("zone", &ClockRequest::zone));
    }
};

void openDatabase(Host& host, const std::optional<Secret>& passphrase, const CallPtr& call) {
    if (host.database()) return call->refuse("a database is open already");
    if (!host.accounts().currentUser()) return call->refuse("no account is signed in");
    if (!passphrase || passphrase->text().empty()) return call->refuse("a passphrase is needed");
    auto path = host.openDatabase(*passphrase);
    if (path) return call->done("response", ValueMap{{"path", bridge::toJson(*path)}});
    call->event(
        "onError", "error",
        ValueMap{{"case", caseName(path.error().kind)}, {"value", ValueMap{{"message", path.error().message}}}});
    call->done();
}

void appInit(Host& host, const InitRequest& request, const CallPtr& call) {
    if (!host.database()) return call->refuse("no database is open");
    if (request.holdInput) call->holdInput();
    call->keepUntilEnd(runInitStep(host.database(), [call](const InitOutcome& outcome) {
        if (auto& failure = outcome.failure)
            call->delegate(caseName(failure->kind), failure->arguments);
        else if (outcome.isRefusedByDatabase)
            call->delegate("notStored", {{"by", bridge::toJson(Process::appInit)}});
        else
            call->delegate("appInitDataFetchedAndSaved", {{"by", bridge::toJson(Process::appInit)}});
        call->done();
        call->finish();
    }));
}

// The open database belongs to the former account, so it is closed with it.
void account(Host& host, const AccountRequest& request, const CallPtr& call) {
    if (request.account.empty()) return call->refuse("request.account: an account id is not empty");
    if (host.accounts().currentUser() != request.account) host.closeDatabase();
    bool known = !request.token && host.accounts().select(request.account);
    if (!known) host.accounts().signIn(request.account, {request.token, request.authenticationType});
    call->done();
}

void tokens(Host& host, const TokensRequest& request, const CallPtr& call) {
    auto held = host.accounts().heldTokens();
    if (request.hold) *request.hold ? host.accounts().holdTokens() : host.accounts().releaseTokens();
    call->done("response", ValueMap{{"held", bridge::toJson(held)}});
}

std::optional<std::string> faultOf(const ClockRequest& request) {
    if (request.free && (request.set || request.advance || request.zone)) return "request.free: stands alone";
    if (request.advance && !request.set && !Clock::isSet()) return "request.advance: the clock is not set";
    if (request.advance && *request.advance < 0) return "request.advance: the clock does not go back";
    if (request.zone && platform::LocalZone::named(*request.zone)->name() != *request.zone)
        return "request.zone: there is no time zone of this name";
    return std::nullopt;
}

void clock(const ClockRequest& request, const CallPtr& call) {
    if (auto fault = faultOf(request)) return call->refuse(*fault);
    if (request.free) {
        Clock::release();
        Clock::setTimeZone(std::nullopt);
    }
    if (request.zone) Clock::setTimeZone(*request.zone);
    if (request.set) Clock::set(Clock::WallTime(std::chrono::milliseconds(*request.set)));
    if (request.advance) Clock::advance(std::chrono::milliseconds(*request.advance));
    call->done();
}

}  // namespace

void addHostCalls(Registry& registry, Host& host, const std::optional<Secret>& passphrase) {
    registry.add("host.config", [](const CallPtr& call) {
        auto misread = setConfigFields(call->request());
        if (!misread) call->done();
        return misread;
    });
    registry.addOperation<OpenRequest>("host.openDatabase",
                                       [&host, passphrase](const OpenRequest& request, const CallPtr& call) {
                                           auto named = request.passphrase;
                                           openDatabase(host, named ? Secret(*std::move(named)) : passphrase, call);
                                       });
    registry.addOperation<NoRequest>("host.closeDatabase", [&host](NoRequest, const CallPtr& call) {
        host.closeDatabase() ? call->done() : call->refuse("no database is open");
    });
    registry.addOperation<InitRequest>(
        "host.appInit", [&host](const InitRequest& request, const CallPtr& call) { appInit(host, request, call); });
    registry.addOperation<AccountRequest>(
        "host.account", [&host](const AccountRequest& request, const CallPtr& call) { account(host, request, call); });
    registry.addOperation<TokensRequest>(
        "host.tokens", [&host](const TokensRequest& request, const CallPtr& call) { tokens(host, request, call); });
    registry.addOperation<ClockRequest>("host.clock",
                                        [](const ClockRequest& request, const CallPtr& call) { clock(request, call); });
    auto topics = std::make_shared<bridge::Topics>();
    addSettingsCalls(registry, topics);
    addMetadataCalls(registry, host);
    addRecordCalls(registry, host);
    addQueueCalls(registry);
    addSyncStateCalls(registry);
    addTransactionCalls(registry);
    registry.addOperation<bridge::Topics::Request>(
        "host.notifications", [topics](const bridge::Topics::Request& request, const CallPtr& call) {
            bool exists = topics->change(request, call->notifier());
            exists ? call->done() : call->refuse("request.topic: there is no topic \"" + request.topic + "\"");
        });
    registry.addOperation<NoRequest>("host.wait", [](NoRequest, const CallPtr& call) {
        call->whenOthersEnded([call] { call->done(), call->finish(); });
    });
    registry.addOperation<NoRequest>("host.quit", [](NoRequest, const CallPtr& call) { call->endSession(); });
}

}  // namespace tarvo::host
