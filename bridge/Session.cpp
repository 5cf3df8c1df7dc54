#include "bridge/Session.h"

#include <utility>

#include "platform/Json.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"

namespace tarvo::bridge {

/// A line of input after it was read.
struct Session::Line {
    Value id;
    std::string call;
    ValueMap request;
};

namespace {

bool isId(const Value& value) { return value.asInteger() || value.asText(); }
bool isKnown(std::string_view name) { return name == "id" || name == "call" || name == "request"; }

// Returns why a line cannot be a call; nullopt when it can.
std::optional<std::string> faultOf(const ValueMap& line) {
    for (auto& entry : line)
        if (!isKnown(entry.name)) return "there is no member \"" + entry.name + "\" in a line";
    auto id = line.find("id");
    if (!id) return "the member \"id\" is missing";
    if (!isId(*id)) return "\"id\" must be a whole number or text";
    auto call = line.find("call");
    if (!call || !call->asText()) return "the member \"call\" must be the name of a call";
    auto request = line.find("request");
    if (request && !request->asMap()) return "\"request\" must be a map";
    return std::nullopt;
}

}  // namespace

void Session::receive(std::string line) {
    MainQueue::shared()->async([self = platform::strongSelf(this), line = std::move(line)]() mutable {
        if (self->inputEnded_) return;
        self->waiting_.push_back(std::move(line));
        self->handleWaiting();
    });
}

void Session::inputEnded() {
    MainQueue::shared()->async([self = platform::strongSelf(this)] {
        self->inputEnded_ = true;
        self->handleWaiting();
    });
}

void Session::handleWaiting() {
    while (!waiting_.empty() && !holder_) {
        auto line = std::move(waiting_.front());
        waiting_.pop_front();
        handle(line);
    }
    if (!inputEnded_ || holder_ || std::exchange(hasReportedEnd_, true)) return;
    if (onInputEnded) onInputEnded();
}

void Session::handle(const std::string& text) {
    if (text.find_first_not_of(" \t\r") == std::string::npos) return;
    auto json = json::parse(std::string_view(text));
    auto map = json ? json->asMap() : nullptr;
    if (!map) return refuse(std::nullopt, "the line is not a JSON object");
    auto id = map->find("id");
    if (auto fault = faultOf(*map)) return refuse(id ? std::optional(*id) : std::nullopt, *fault);
    auto request = map->find("request");
    start({*id, *map->find("call")->asText(), request ? *request->asMap() : ValueMap()});
}

void Session::start(Line line) {
    auto start = registry_.find(line.call);
    if (!start) return refuse(line.id, "there is no call \"" + line.call + "\"");
    auto number = ++lastNumber_;
    underWay_[number].id = line.id;
    {
        platform::MutexLock lock(writing_);
        unfinished_.insert(number);
    }
    auto call =
        std::make_shared<const Call>(platform::weakSelf(this), number, std::move(line.id), std::move(line.request));
    if (auto misread = (*start)(call)) call->refuse(std::move(*misread).below("request").text());
}

void Session::refuse(const std::optional<Value>& id, std::string_view message) {
    ValueMap line;
    if (id) line.set("id", *id);
    line.set("event", "refused");
    line.set("message", message);
    write(line);
}

void Session::writeFor(Number call, const ValueMap& line, bool isLast) {
    auto isWanted = [&] {
        writing_.assumeHeld();
        return isLast ? unfinished_.erase(call) == 1 : unfinished_.contains(call);
    };
    writeIf(isWanted, line);
}

void Session::writeIf(platform::FunctionRef<bool()> isWanted, const ValueMap& line) {
    auto text = json::write(writable(line));
    if (!text)
        return platform::log(platform::LogLevel::warning, "bridge", "error: a line of the session has no form in JSON");
    platform::MutexLock lock(writing_);
    if (isWanted()) sink_(*text);
}

void Session::notification(std::string_view topic, std::string_view name, ValueMap arguments) {
    write({{"event", "notification"}, {"topic", topic}, {"name", name}, {"arguments", std::move(arguments)}});
}

void Session::keep(Number call, std::shared_ptr<void> object) {
    if (auto found = underWay_.find(call); found != underWay_.end()) found->second.kept.push_back(std::move(object));
}

void Session::hold(Number call, std::function<void()> whenAlone) {
    holder_ = Holder{call, std::move(whenAlone)};
    if (holder_->whenAlone && onlyHolderIsLeft()) std::exchange(holder_->whenAlone, nullptr)();
}

void Session::end(Number call) {
    auto found = underWay_.find(call);
    if (found == underWay_.end()) return;
    ending_.emplace(call, std::move(found->second));
    underWay_.erase(found);
    waiting_.clear();
    inputEnded_ = true;
}

void Session::ended(Number call) {
    auto found = underWay_.find(call);
    if (found == underWay_.end()) return;
    // The kept objects are released after the entry is gone: their destructors may call back into the session.
    auto kept = std::move(found->second);
    underWay_.erase(found);
    writeFor(call, {{"id", kept.id}, {"event", "done"}}, true);
    if (holder_ && holder_->call == call) holder_.reset();
    if (holder_ && holder_->whenAlone && onlyHolderIsLeft()) std::exchange(holder_->whenAlone, nullptr)();
    handleWaiting();
}

void Session::close() {
    auto kept = std::exchange(underWay_, {});
    if (auto ending = std::exchange(ending_, std::nullopt))
        writeFor(ending->first, {{"id", ending->second.id}, {"event", "done"}}, true);
}

}  // namespace tarvo::bridge
