#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "bridge/Call.h"
#include "bridge/forms/JsonForm.h"
#include "tarvobase/usecase/ErrorProtocols.h"

namespace tarvo::bridge {

/// The base of the delegates whose operations become lines: each passes its operations on by name.
///
///     class StoreOrgsErrors : public virtual DelegateLines, public virtual StoreOrgsErrorProtocol {
///         void noOrgsFetched() override { report("noOrgsFetched"); }
///     };
class DelegateLines : public virtual platform::Object {
public:
    using Listener = std::function<void(std::string_view name, ValueMap arguments)>;
    /// Called for each operation, on the thread that calls it. Set before the delegate is handed over.
    Listener listener;

protected:
    void report(std::string_view name, ValueMap arguments = {}) {
        if (listener) listener(name, std::move(arguments));
    }
};

/// Makes a delegate whose operations are lines of a call. The call keeps it until the end; since the delegate holds the
/// call in turn, such a call ends with `finish` only.
template <std::derived_from<DelegateLines> R>
std::shared_ptr<R> linesFor(const CallPtr& call) {
    auto lines = std::make_shared<R>();
    lines->listener = [call](std::string_view name, ValueMap arguments) { call->delegate(name, std::move(arguments)); };
    call->keepUntilEnd(lines);
    return lines;
}

/// Sets a delegate whose first notice ends the call, and keeps use case and delegate until then.
template <class R, class UseCase>
std::shared_ptr<UseCase> answeringOnce(std::shared_ptr<UseCase> usecase, const CallPtr& call) {
    auto lines = linesFor<R>(call);
    lines->listener = [call](std::string_view name, ValueMap arguments) {
        call->delegate(name, std::move(arguments));
        call->finish();
    };
    usecase->delegate = lines;
    call->keepUntilEnd(usecase);
    return usecase;
}

/// The failures of an error interface as lines, `Relay` being its relay.
template <class Relay>
class ErrorLines : public virtual DelegateLines, public Relay {
protected:
    void relay(const typename Relay::Notice& notice) override { report(caseName(notice.kind), notice.arguments); }
};

/// The failures that every delegate operation may report.
using CommonErrorLines = ErrorLines<CommonErrorRelay>;

}  // namespace tarvo::bridge
