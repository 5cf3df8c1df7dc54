#pragma once

#include <optional>
#include <utility>
#include <vector>

namespace tarvo {

/// Last in, first out. A value: copies are independent.
template <class T>
class Stack {
public:
    void push(T element) { storage_.push_back(std::move(element)); }
    /// Takes the top element off; nothing from an empty stack.
    std::optional<T> pop() {
        if (storage_.empty()) return std::nullopt;
        std::optional<T> top(std::move(storage_.back()));
        storage_.pop_back();
        return top;
    }
    /// The top element, or null. Valid until the stack changes.
    const T* peek() const { return storage_.empty() ? nullptr : &storage_.back(); }
    bool isEmpty() const { return storage_.empty(); }
    std::size_t count() const { return storage_.size(); }

private:
    std::vector<T> storage_;
};

}  // namespace tarvo
