#pragma once

#include <mutex>
#include <utility>

namespace tarvo {

/// One field of the configuration. Reading copies the value, setting is safe at any time from any thread; a change
/// takes effect at the next read.
template <class T>
class Setting {
public:
    Setting() = default;
    explicit Setting(T value) : value_(std::move(value)) {}
    Setting(const Setting&) = delete;

    T get() const {
        std::lock_guard lock(mutex_);
        return value_;
    }
    operator T() const { return get(); }  // NOLINT: a setting reads like its value
    T operator()() const { return get(); }

    void set(T value) {
        // The former value leaves through the parameter, so it ends after the lock: its destructor may be the host's.
        std::lock_guard lock(mutex_);
        std::swap(value_, value);
    }
    Setting& operator=(T value) {
        set(std::move(value));
        return *this;
    }
    Setting& operator=(const Setting&) = delete;

private:
    mutable std::mutex mutex_;
    T value_{};
};

}  // namespace tarvo
