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

/// Base of the delegates that pass each of their operations on by name. A recorder has a line for each:
///
///     class StoreOrgsErrors : public virtual Recorder, public virtual StoreOrgsErrorProtocol {
///         void noOrgsFetched() override { told("noOrgsFetched"); }
///     };
class Recorder : public virtual platform::Object {
public:
    using Listener = std::function<void(std::string_view name, ValueMap arguments)>;
    /// Hears every operation, on the thread that calls it. Set before the recorder is handed to anybody.
    Listener listener;

protected:
    void told(std::string_view name, ValueMap arguments = {}) {
        if (listener) listener(name, std::move(arguments));
    }
};

/// A recorder whose operations are lines of a call, which keeps it until its end. Since the recorder holds the call in
/// turn, such a call ends with `finish` alone.
template <std::derived_from<Recorder> R>
std::shared_ptr<R> recorderFor(const CallPtr& call) {
    auto recorder = std::make_shared<R>();
    recorder->listener = [call](std::string_view name, ValueMap arguments) {
        call->delegate(name, std::move(arguments));
    };
    call->keepUntilEnd(recorder);
    return recorder;
}

/// Gives the use case a recorder whose first notice ends the call, and keeps both until then.
template <class R, class UseCase>
std::shared_ptr<UseCase> answeringOnce(std::shared_ptr<UseCase> usecase, const CallPtr& call) {
    auto recorder = recorderFor<R>(call);
    recorder->listener = [call](std::string_view name, ValueMap arguments) {
        call->delegate(name, std::move(arguments));
        call->finish();
    };
    usecase->delegate = recorder;
    call->keepUntilEnd(usecase);
    return usecase;
}

/// The failures of an error interface as lines, `Relay` being its relay.
template <class Relay>
class ErrorRecorder : public virtual Recorder, public Relay {
protected:
    void relay(const typename Relay::Notice& notice) override { told(caseName(notice.kind), notice.arguments); }
};

/// The failures that every delegate operation may report.
using CommonErrorRecorder = ErrorRecorder<CommonErrorRelay>;

}  // namespace tarvo::bridge
