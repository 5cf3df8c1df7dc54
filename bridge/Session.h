#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bridge/Registry.h"
#include "platform/DispatchQueue.h"
#include "platform/FunctionRef.h"
#include "platform/Object.h"
#include "platform/ThreadSafety.h"

namespace tarvo::bridge {

/// A conversation in lines of JSON: requests in, callbacks out. It starts calls on the main queue in the order of their
/// lines; a call that holds the input makes later lines wait. Held by `shared_ptr`.
class Session final : public platform::Object {
public:
    /// Receives one line without a line feed. Called from any thread, one call at a time.
    using Sink = std::function<void(std::string_view line)>;

    Session(Registry registry, Sink sink) : registry_(std::move(registry)), sink_(std::move(sink)) {}

    /// Called once on the main queue when the session accepts no further line.
    std::function<void()> onInputEnded;

    /// Queues the next line. Any thread.
    void receive(std::string line);
    /// Notes that no further line follows. Any thread.
    void inputEnded();

    /// Returns whether no call is under way. Main queue.
    bool isIdle() const { return underWay_.empty(); }
    /// Releases everything and writes the last line of the call that ended the session. Main thread, after its loop has
    /// ended.
    void close();

    /// Writes a notice that belongs to no call. Any thread.
    void notification(std::string_view topic, std::string_view name, ValueMap arguments);

private:
    friend class Call;
    using Number = std::uint64_t;
    struct Line;

    void handleWaiting();
    void handle(const std::string& text);
    void start(Line line);
    void refuse(const std::optional<Value>& id, std::string_view message);
    void write(const ValueMap& line) {
        writeIf([] { return true; }, line);
    }
    /// Drops the line if the last line of the call was written before.
    void writeFor(Number call, const ValueMap& line, bool isLast);
    void writeIf(platform::FunctionRef<bool()> isWanted, const ValueMap& line);

    void keep(Number call, std::shared_ptr<void> object);
    void hold(Number call, std::function<void()> whenAlone);
    void end(Number call);
    void ended(Number call);

    /// A call that has not ended, with the objects that it keeps.
    struct UnderWay {
        Value id;
        std::vector<std::shared_ptr<void>> kept;
    };
    struct Holder {
        Number call;
        std::function<void()> whenAlone;  // null once it has run
    };
    bool onlyHolderIsLeft() const { return underWay_.size() == 1 && underWay_.contains(holder_->call); }

    // Everything except `write` and its mutex belongs to the main queue.
    const Registry registry_;
    platform::Mutex writing_;
    const Sink sink_ TARVO_GUARDED_BY(writing_);
    std::set<Number> unfinished_ TARVO_GUARDED_BY(writing_);  // calls whose last line is still to come
    std::deque<std::string> waiting_;
    bool inputEnded_ = false;
    bool hasReportedEnd_ = false;
    Number lastNumber_ = 0;
    std::map<Number, UnderWay> underWay_;
    std::optional<Holder> holder_;
    std::optional<std::pair<Number, UnderWay>> ending_;  // the call that ends the session
};

}  // namespace tarvo::bridge
