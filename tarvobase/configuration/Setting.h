#pragma once

#include <utility>

#include "platform/ThreadSafety.h"

namespace tarvo {

/// A field of the configuration. Reading copies the value. Reading and setting are safe at any time from any thread; a
/// change takes effect at the next read.
template <class T>
class Setting {
public:
    Setting() = default;
    explicit Setting(T value) : value_(std::move(value)) {}
    Setting(const Setting&) = delete;

    T get() const {
        platform::MutexLock lock(mutex_);
        return value_;
    }
    operator T() const { return get(); }  // NOLINT: a setting reads like its value
    T operator()() const { return get(); }

    void set(T value) {
        // The former value is destroyed with the parameter, after the lock is released: its destructor may be the
        // host's.
        platform::MutexLock lock(mutex_);
        std::swap(value_, value);
    }
    Setting& operator=(T value) {
        set(std::move(value));
        return *this;
    }
    Setting& operator=(const Setting&) = delete;

private:
    mutable platform::Mutex mutex_;
    T value_ TARVO_GUARDED_BY(mutex_){};
};

}  // namespace tarvo
