#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <typeindex>
#include <unordered_map>

namespace tarvo::platform {

/// Owns everything that exists once per process: configuration, bus, memory tables, caches, kept answers. Each kind is
/// made when it is first asked for. Tests install a fresh state per case; the program keeps one from start to end.
class ProcessState {
public:
    static ProcessState& current();

    /// Ends the present state and begins a fresh one. Only when nothing of the library runs: after `shutdown`.
    static void installFresh();

    /// The one `T` of this state, made by its default constructor at first use. Lives as long as the state.
    template <class T>
    T& get() {
        std::lock_guard lock(mutex_);
        auto& slot = slots_[typeid(T)];
        if (!slot) slot = std::make_shared<T>();
        return *static_cast<T*>(slot.get());
    }

private:
    // Recursive: making one thing may ask for another.
    std::recursive_mutex mutex_;
    std::unordered_map<std::type_index, std::shared_ptr<void>> slots_;
};

}  // namespace tarvo::platform
