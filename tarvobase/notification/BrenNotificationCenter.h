#pragma once

#include <functional>
#include <map>
#include <memory>
#include <typeindex>
#include <unordered_map>

#include "platform/DispatchQueue.h"
#include "platform/Object.h"

namespace tarvo {

/// The bus of the program's notices. An interface type is the topic, and every object that is registered under it gets
/// each notice. Observers are held weakly, and none has to unregister before it dies.
///
/// `notify` has finished its walk over the observers when it returns. The callbacks run later, on the main queue or on
/// the bus's background queue, in no fixed order among observers. An observer's registration is checked again right
/// before its callback, so an observer that was removed or has died gets none. A callback may add and remove observers.
/// On the background queue one observer gets two notices in the order of the two calls of `notify`.
class BrenNotificationCenter {
public:
    static BrenNotificationCenter& shared();

    BrenNotificationCenter();
    explicit BrenNotificationCenter(std::shared_ptr<DispatchQueue> postNotificationQueue);

    /// Registers an object under a topic. Registering it again changes nothing.
    template <class Topic>
    void add(const std::shared_ptr<Topic>& observer) {
        addEntry(typeid(Topic), {observer, observer.get()});
    }
    template <class Topic>
    void remove(const std::shared_ptr<Topic>& observer) {
        removeEntry(typeid(Topic), identity(observer.get()));
    }
    /// Unregisters an object in its destructor, where no `shared_ptr` to it exists any more.
    template <class Topic>
    void remove(const Topic* observer) {
        removeEntry(typeid(Topic), identity(observer));
    }

    /// Calls `callback` once for each live observer of the topic.
    template <class Topic>
    void notify(bool onMainThread, std::function<void(Topic&)> callback) {
        notifyEach(typeid(Topic), onMainThread, untyped<Topic, void>(std::move(callback)), {});
    }
    /// Does so for the observers that `wants` chooses. It is asked at once, on the caller's thread.
    template <class Topic>
    void notifyThose(std::function<bool(Topic&)> wants, bool onMainThread, std::function<void(Topic&)> callback) {
        notifyEach(typeid(Topic), onMainThread, untyped<Topic, void>(std::move(callback)),
                   untyped<Topic, bool>(std::move(wants)));
    }

    /// Returns how many observers are registered under a topic, dead ones included until the next `notify`.
    template <class Topic>
    std::size_t count() const {
        return countEntries(typeid(Topic));
    }

private:
    using Identity = const void*;
    struct BrenObserver {
        std::weak_ptr<platform::Object> observer;
        void* topicAddress;  // the same object as the topic's type sees it
    };
    using Observers = std::map<Identity, BrenObserver>;

    template <class Topic, class Result>
    static std::function<Result(void*)> untyped(std::function<Result(Topic&)> function) {
        return [function = std::move(function)](void* observer) { return function(*static_cast<Topic*>(observer)); };
    }
    static Identity identity(const platform::Object* object) { return object; }
    void addEntry(std::type_index topic, BrenObserver observer);
    void removeEntry(std::type_index topic, Identity identity);
    void notifyEach(std::type_index topic, bool onMainThread, std::function<void(void*)> callback,
                    const std::function<bool(void*)>& wants);
    std::size_t countEntries(std::type_index topic) const;

    // A pending notice may outlive the center, so the registrations are shared with it.
    struct State {
        std::shared_ptr<DispatchQueue> serialQueue = DispatchQueue::serial("nimbra.kelvan.mail");
        std::unordered_map<std::type_index, Observers> observers;
    };
    std::shared_ptr<State> state_;
    std::shared_ptr<DispatchQueue> postNotificationQueue_;
};

}  // namespace tarvo
