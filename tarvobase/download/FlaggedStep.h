#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Data.h"
#include "platform/Result.h"
#include "tarvobase/download/Downloadable.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/network_layer/ServiceRequests.h"
#include "tarvobase/utils/UserDefaultsUtil.h"

namespace tarvo {

/// A step of the first download that is one request, with a flag in the account's settings that says it is done. The
/// order of events:
///
///     execute -> the flag is set: the delegate hears `didComplete(true)`, and nothing else happens
///             -> `request` -> `store` -> the flag -> the success closure -> `didComplete(true)`
///                          -> no answer, or none that can be used: the failure closure -> `didComplete(false)`
///
/// A failed step keeps its flag clear, so that the next run asks again. The failure is logged, and `errorResponder`
/// hears of it: `networkResponseError` or `noAuthtoken` of the transport, `parsingError` of the answer.
///
/// The answer is read, stored and told on the network queue. A step is executed once. Held by `shared_ptr`; one that is
/// let go meanwhile, or a program that shuts down, ends without a report.
class FlaggedStep : public virtual Downloadable {
public:
    using Callback = std::function<void()>;

    void execute() final { execute({}, {}); }
    /// The same, and tells the caller too, just before the delegate. Neither closure is called when the flag was set.
    void execute(Callback success, Callback failure);

protected:
    explicit FlaggedStep(UserDefaultsUtil userDefaultsUtil) : userDefaultsUtil_(std::move(userDefaultsUtil)) {}

    /// Sends the request. Without what it takes to ask, says so through `fail` and sends nothing.
    virtual void request(NetworkCompletion answered) = 0;
    /// Reads an answer and stores what it brings: all of it, or nothing and the error.
    virtual Result<platform::Nothing, ParserError> store(const Data& body) = 0;
    /// Called when `store` has succeeded. Only a step that defers its storing defers the flag.
    virtual void markStored() { setFlag(); }

    void setFlag() { userDefaultsUtil_.setCompleted(flag()); }
    void fail(const std::string& why);

private:
    std::string flag() const { return std::string(rawText(processName())); }
    void answered(const NetworkAnswer& answer);
    void end(const Callback& closure, bool status);

    UserDefaultsUtil userDefaultsUtil_;
    Callback success_;
    Callback failure_;
};

}  // namespace tarvo
