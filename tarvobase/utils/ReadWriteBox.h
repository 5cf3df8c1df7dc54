#pragma once

#include <string>
#include <utility>

#include "platform/DispatchQueue.h"
#include "platform/Random.h"

namespace tarvo {

/// A value that a concurrent queue guards. Reads run side by side; a write runs alone and blocks its caller until it
/// has run. Any thread may use it. Functions that are passed to `read` and `write` run on the calling thread and must
/// not write to the same box. A write from inside a read would wait for itself, so it is reported as a programming
/// error.
template <class T>
class ReadWriteBox {
public:
    explicit ReadWriteBox(T value = T())
        : ReadWriteBox(std::move(value), "com.nimbra.kelvan.readWriteBox" + platform::Random::uuid()) {}
    ReadWriteBox(T value, std::string label)
        : value_(std::move(value)), queue_(DispatchQueue::concurrent(std::move(label))) {}

    T value() const {
        return read([](const T& value) { return value; });
    }
    void setValue(T value) {
        write([&](T& held) { held = std::move(value); });
    }

    /// Returns the result of the function, which reads the value and must not keep a reference to it.
    template <class F>
    auto read(F&& function) const {
        return queue_->sync([&] { return function(std::as_const(value_)); });
    }
    /// Returns the result of the function, which may change the value.
    template <class F>
    auto write(F&& function) {
        return queue_->syncBarrier([&] { return function(value_); });
    }

    const std::string& label() const { return queue_->label(); }

private:
    T value_;
    std::shared_ptr<DispatchQueue> queue_;
};

}  // namespace tarvo
