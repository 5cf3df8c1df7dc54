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

/// A step of the first download that consists of one request. A flag in the account's settings records that it is done.
/// The order of events:
///
///     execute -> the flag is set: `didComplete(true)`, and nothing else happens
///             -> `request` -> `store` -> the flag -> the success closure -> `didComplete(true)`
///                          -> no answer, or an unusable one: the failure closure -> `didComplete(false)`
///
/// A failed step leaves its flag clear, so the next run asks again. The failure is logged and reported to
/// `errorResponder`: `networkResponseError` or `noAuthtoken` if the transport failed, `parsingError` if the answer is
/// unusable.
///
/// The answer is parsed, stored and reported on the network queue. A step is executed once and is held by `shared_ptr`.
/// It ends without a report if it is released before the answer comes, or if the program shuts down.
class FlaggedStep : public virtual Downloadable {
public:
    using Callback = std::function<void()>;

    void execute() final { execute({}, {}); }
    /// Does the same and calls one of the closures just before the delegate. Calls neither if the flag was already set.
    void execute(Callback success, Callback failure);

protected:
    explicit FlaggedStep(UserDefaultsUtil userDefaultsUtil) : userDefaultsUtil_(std::move(userDefaultsUtil)) {}

    /// Sends the request. Calls `fail` and sends nothing if the data that the request needs are missing.
    virtual void request(NetworkCompletion answered) = 0;
    /// Parses an answer and stores all of its content. Stores nothing and returns the error if it cannot be parsed.
    virtual Result<platform::Nothing, ParserError> store(const Data& body) = 0;
    /// Called after `store` has succeeded. Sets the flag; a step that stores later overrides this and sets it later.
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
