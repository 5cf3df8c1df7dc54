#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Value.h"

namespace tarvo::bridge {

class Session;

/// A call under way. Everything that may still answer holds it; the call ends when it is released, or with `finish`. So
/// a call whose operation never answers (a request whose source is `none`) ends too. Its last line is `done`, which the
/// session writes unless the call did, or `refused`; a line that comes later is dropped.
///
/// Lines may be written from any thread; the other operations belong to the main queue unless they say otherwise.
class Call {
public:
    Call(std::weak_ptr<Session> session, std::uint64_t number, Value id, ValueMap request);
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    const ValueMap& request() const { return request_; }

    /// Writes `{"id":..,"event":"<name>"}`, with one further member if `member` is not empty. Any thread.
    void event(std::string_view name, std::string_view member = {}, Value value = {}) const;
    /// Writes that an operation of a delegate was called. Any thread.
    void delegate(std::string_view name, ValueMap arguments) const;
    /// Writes the last line of the call, with one member if `member` is not empty. Any thread.
    void done(std::string_view member = {}, Value value = {}) const { event("done", member, std::move(value)); }
    /// Writes as its last line that the request cannot be carried out and that nothing was changed. Any thread.
    void refuse(std::string_view message) const { event("refused", "message", message); }
    /// The same with further members. Any thread.
    void refuse(std::string_view message, const ValueMap& members) const;

    /// Returns a function that writes notices that belong to no call, as long as the session lasts. It does not hold
    /// the call. Any thread.
    std::function<void(std::string_view topic, std::string_view name, ValueMap arguments)> notifier() const;

    /// Keeps an object alive until the call has ended: use cases hold themselves weakly while they work.
    void keepUntilEnd(std::shared_ptr<void> object) const;
    /// Makes later lines wait until this call has ended.
    void holdInput() const;
    /// Makes later lines wait, and runs the work once every other call has ended.
    void whenOthersEnded(std::function<void()> work) const;
    /// Accepts no further line; the session ends when the other calls under way have ended, and then writes the last
    /// line of this call.
    void endSession() const;
    /// Ends the call although it is still held. Any thread; may be called twice.
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
