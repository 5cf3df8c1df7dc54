#pragma once

#include <optional>
#include <utility>
#include <vector>

namespace tarvo {

/// A stack: last in, first out. Copies are independent.
template <class T>
class Stack {
public:
    void push(T element) { storage_.push_back(std::move(element)); }
    /// Removes and returns the top element, or nullopt if the stack is empty.
    std::optional<T> pop() {
        if (storage_.empty()) return std::nullopt;
        std::optional<T> top(std::move(storage_.back()));
        storage_.pop_back();
        return top;
    }
    /// Returns the top element, or null. The pointer is valid until the stack changes.
    const T* peek() const { return storage_.empty() ? nullptr : &storage_.back(); }
    bool isEmpty() const { return storage_.empty(); }
    std::size_t count() const { return storage_.size(); }

private:
    std::vector<T> storage_;
};

}  // namespace tarvo
