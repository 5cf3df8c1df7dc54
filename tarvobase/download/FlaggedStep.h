#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Data.h"
#include "platform/FunctionRef.h"
#include "platform/Result.h"
#include "tarvobase/configuration/Scope.h"
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
///                          -> no answer, an unusable one, or one that the database does not store:
///                             the failure closure -> `didComplete(false)`
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
    /// The step belongs to the scope. It stores and flags nothing after the scope is outdated.
    FlaggedStep(UserDefaultsUtil userDefaultsUtil, Scope scope)
        : userDefaultsUtil_(std::move(userDefaultsUtil)), scope_(std::move(scope)) {}

    /// Sends the request. Calls `fail` and sends nothing if the data that the request needs are missing.
    virtual void request(NetworkCompletion answered) = 0;
    /// Parses an answer and stores all of its content in one commit. Returns whether it was committed, or the error if
    /// the answer cannot be parsed.
    virtual Result<bool, ParserError> store(const Data& body) = 0;
    /// Called after `store` has committed. Sets the flag; a step that stores later overrides this and sets it later.
    virtual void markStored() { setFlag(); }

    /// Stores content of the server through table classes, in one commit. Returns whether it was committed.
    bool commit(platform::FunctionRef<void()> store);
    void setFlag() { userDefaultsUtil_.setCompleted(flag()); }
    void fail(const std::string& why);

private:
    std::string flag() const { return std::string(rawText(processName())); }
    void answered(const NetworkAnswer& answer);
    void end(const Callback& closure, bool status);

    UserDefaultsUtil userDefaultsUtil_;
    const Scope scope_;
    Callback success_;
    Callback failure_;
};

}  // namespace tarvo
