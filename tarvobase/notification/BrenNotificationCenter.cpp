#include "tarvobase/notification/BrenNotificationCenter.h"

#include "platform/MainQueue.h"
#include "platform/ProcessState.h"

namespace tarvo {

BrenNotificationCenter& BrenNotificationCenter::shared() {
    return platform::ProcessState::current().get<BrenNotificationCenter>();
}

BrenNotificationCenter::BrenNotificationCenter()
    : BrenNotificationCenter(DispatchQueue::serial("nimbra.kelvan.mail.post", DispatchQueue::Quality::background)) {}

BrenNotificationCenter::BrenNotificationCenter(std::shared_ptr<DispatchQueue> postNotificationQueue)
    : state_(std::make_shared<State>()), postNotificationQueue_(std::move(postNotificationQueue)) {}

void BrenNotificationCenter::addEntry(std::type_index topic, BrenObserver observer) {
    auto object = observer.observer.lock();
    if (!object) return;
    state_->serialQueue->sync([&] { state_->observers[topic][identity(object.get())] = observer; });
}

void BrenNotificationCenter::removeEntry(std::type_index topic, Identity identity) {
    state_->serialQueue->sync([&] {
        auto found = state_->observers.find(topic);
        if (found != state_->observers.end()) found->second.erase(identity);
    });
}

void BrenNotificationCenter::notifyEach(std::type_index topic, bool onMainThread, std::function<void(void*)> callback,
                                        const std::function<bool(void*)>& wants) {
    // Locked observers are released after leaving the queue, because the last reference may end an object that
    // unregisters here.
    std::vector<std::shared_ptr<platform::Object>> keptAlive;
    std::vector<std::pair<Identity, BrenObserver>> called;
    auto call = std::make_shared<const std::function<void(void*)>>(std::move(callback));
    auto post = [&] {
        for (auto& [identity, entry] : called) {
            auto item = [state = state_, topic, identity = identity, entry = entry, call] {
                auto observer = entry.observer.lock();
                if (!observer) return;
                bool isRegistered = state->serialQueue->sync([&] {
                    auto found = state->observers.find(topic);
                    return found != state->observers.end() && found->second.contains(identity);
                });
                if (isRegistered) (*call)(entry.topicAddress);
            };
            (onMainThread ? std::static_pointer_cast<DispatchQueue>(MainQueue::shared()) : postNotificationQueue_)
                ->async(std::move(item));
        }
    };
    state_->serialQueue->sync([&] {
        auto found = state_->observers.find(topic);
        if (found == state_->observers.end()) return;
        std::erase_if(found->second, [](auto& entry) { return entry.second.observer.expired(); });
        for (auto& [identity, entry] : found->second)
            if (auto alive = entry.observer.lock()) {
                called.emplace_back(identity, entry);
                keptAlive.push_back(std::move(alive));
            }
        // Notices that nobody chooses among reach each observer in the order of the calls.
        if (!wants) post();
    });
    if (!wants) return;
    // An observer that is asked may use this object.
    std::erase_if(called, [&](auto& each) { return !wants(each.second.topicAddress); });
    post();
}

std::size_t BrenNotificationCenter::countEntries(std::type_index topic) const {
    return state_->serialQueue->sync([&]() -> std::size_t {
        auto found = state_->observers.find(topic);
        return found == state_->observers.end() ? 0 : found->second.size();
    });
}

}  // namespace tarvo
