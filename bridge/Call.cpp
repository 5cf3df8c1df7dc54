#include "bridge/Call.h"

#include "bridge/Session.h"
#include "platform/MainQueue.h"

namespace tarvo::bridge {

Call::Call(std::weak_ptr<Session> session, std::uint64_t number, Value id, ValueMap request)
    : session_(std::move(session)), number_(number), id_(std::move(id)), request_(std::move(request)) {}

Call::~Call() { finish(); }

void Call::event(std::string_view name, std::string_view member, Value value) const {
    ValueMap line{{"id", id_}, {"event", name}};
    if (!member.empty()) line.set(member, std::move(value));
    bool isLast = name == "done" || name == "refused";
    if (auto session = session_.lock()) session->writeFor(number_, line, isLast);
}

void Call::refuse(std::string_view message, const ValueMap& members) const {
    ValueMap line{{"id", id_}, {"event", "refused"}, {"message", message}};
    for (auto& member : members) line.set(member.name, member.value);
    if (auto session = session_.lock()) session->writeFor(number_, line, true);
}

void Call::delegate(std::string_view name, ValueMap arguments) const {
    if (auto session = session_.lock())
        session->writeFor(
            number_, {{"id", id_}, {"event", "delegate"}, {"name", name}, {"arguments", std::move(arguments)}}, false);
}

std::function<void(std::string_view, std::string_view, ValueMap)> Call::notifier() const {
    return [weak = session_](std::string_view topic, std::string_view name, ValueMap arguments) {
        if (auto session = weak.lock()) session->notification(topic, name, std::move(arguments));
    };
}

void Call::keepUntilEnd(std::shared_ptr<void> object) const {
    if (auto session = session_.lock()) session->keep(number_, std::move(object));
}
void Call::holdInput() const {
    if (auto session = session_.lock()) session->hold(number_, nullptr);
}
void Call::whenOthersEnded(std::function<void()> work) const {
    if (auto session = session_.lock()) session->hold(number_, std::move(work));
}
void Call::endSession() const {
    if (auto session = session_.lock()) session->end(number_);
}

// The last reference may be released on any thread, but the kept objects belong to the main queue.
void Call::finish() const {
    MainQueue::shared()->async([session = session_, number = number_] {
        if (auto present = session.lock()) present->ended(number);
    });
}

}  // namespace tarvo::bridge
