#pragma once

#include <functional>
#include <map>
#include <memory>
#include <typeindex>
#include <unordered_map>

#include "platform/DispatchQueue.h"
#include "platform/Object.h"

namespace tarvo {

/// The program's notices: an interface type is the topic, and every object registered under it hears each notice.
/// Observers are held weakly; none has to sign off before it dies.
///
/// `notify` has finished its walk over the observers when it returns; the callbacks run later, on the main queue or on
/// the bus's background queue, in no fixed order among observers. Right before its callback an observer's registration
/// is looked at again: one that was removed, or is gone, hears nothing. A callback may add and remove. The order of two
/// notices to one observer on the background queue is that of the two calls of `notify`.
class BrenNotificationCenter {
public:
    static BrenNotificationCenter& shared();

    BrenNotificationCenter();
    explicit BrenNotificationCenter(std::shared_ptr<DispatchQueue> postNotificationQueue);

    /// Registers an object under a topic; a second time changes nothing.
    template <class Topic>
    void add(const std::shared_ptr<Topic>& observer) {
        addEntry(typeid(Topic), {observer, observer.get()});
    }
    template <class Topic>
    void remove(const std::shared_ptr<Topic>& observer) {
        removeEntry(typeid(Topic), identity(observer.get()));
    }
    /// For an object that signs off in its destructor, where no `shared_ptr` to it exists any more.
    template <class Topic>
    void remove(const Topic* observer) {
        removeEntry(typeid(Topic), identity(observer));
    }

    /// Has `callback` called once for each live observer of the topic.
    template <class Topic>
    void notify(bool onMainThread, std::function<void(Topic&)> callback) {
        notifyEach(typeid(Topic), onMainThread,
                   [callback = std::move(callback)](void* observer) { callback(*static_cast<Topic*>(observer)); });
    }

    /// Observers registered under a topic, gone ones included until the next `notify`.
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

    static Identity identity(const platform::Object* object) { return object; }
    void addEntry(std::type_index topic, BrenObserver observer);
    void removeEntry(std::type_index topic, Identity identity);
    void notifyEach(std::type_index topic, bool onMainThread, std::function<void(void*)> callback);
    std::size_t countEntries(std::type_index topic) const;

    // A notice under way outlives the center, so the registrations live beside it.
    struct State {
        std::shared_ptr<DispatchQueue> serialQueue = DispatchQueue::serial("nimbra.kelvan.mail");
        std::unordered_map<std::type_index, Observers> observers;
    };
    std::shared_ptr<State> state_;
    std::shared_ptr<DispatchQueue> postNotificationQueue_;
};

}  // namespace tarvo
