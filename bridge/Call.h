#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Value.h"

namespace tarvo::bridge {

class Session;

/// One call under way. Whoever may still answer it holds it; the call has ended when nobody does any more, or with
/// `finish`. So a call whose operation never answers (a request whose source is `none`) ends too.
///
/// Lines may be written from any thread; the other operations are for the main queue unless told otherwise.
class Call {
public:
    Call(std::weak_ptr<Session> session, std::uint64_t number, Value id, ValueMap request);
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    const ValueMap& request() const { return request_; }

    /// `{"id":..,"event":"<name>"}`, with one further member where there is something to tell. Any thread.
    void event(std::string_view name, std::string_view member = {}, Value value = {}) const;
    /// An operation of a delegate was called. Any thread.
    void delegate(std::string_view name, ValueMap arguments) const;
    /// The request cannot be carried out as it stands, and nothing was changed. Any thread.
    void refuse(std::string_view message) const { event("refused", "message", message); }

    /// Writes notices that belong to no call, as long as the session lasts. Does not hold the call. Any thread.
    std::function<void(std::string_view topic, std::string_view name, ValueMap arguments)> notifier() const;

    /// Keeps an object alive until the call has ended: use cases hold themselves weakly while they work.
    void keepUntilEnd(std::shared_ptr<void> object) const;
    /// No further line is taken until this call has ended.
    void holdInput() const;
    /// Holds the input, and runs the work once every other call has ended.
    void whenOthersEnded(std::function<void()> work) const;
    /// No further line is ever taken; the session ends when the calls under way have ended, and runs `lastWords`.
    void endSession(std::function<void()> lastWords) const;
    /// Ends the call although somebody still holds it. Any thread; may be called twice.
    void finish() const;

private:
    friend class Session;
    const std::weak_ptr<Session> session_;
    const std::uint64_t number_;
    const Value id_;
    const ValueMap request_;
};

using CallPtr = std::shared_ptr<const Call>;

}  // namespace tarvo::bridge
