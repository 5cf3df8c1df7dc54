#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "tarvobase/utils/ReadWriteBox.h"

namespace tarvo {

/// A list that any thread may use, synchronized like `SynchronizedDictionary`. Other threads may change the list
/// between a call of `count` and the next call, so an index out of range is not an error: reading it returns nullopt,
/// and writing to it does nothing.
template <class T>
class SynchronizedArray {
public:
    void append(T newElement) {
        elements_.write([&](Elements& elements) { elements.push_back(std::move(newElement)); });
    }
    /// Returns the element that was removed.
    std::optional<T> removeAtIndex(std::size_t index) {
        return elements_.write([&](Elements& elements) -> std::optional<T> {
            if (index >= elements.size()) return std::nullopt;
            std::optional<T> removed(std::move(elements[index]));
            elements.erase(elements.begin() + static_cast<std::ptrdiff_t>(index));
            return removed;
        });
    }
    /// Returns false if there is no such index.
    bool set(std::size_t index, T element) {
        return elements_.write([&](Elements& elements) {
            if (index >= elements.size()) return false;
            elements[index] = std::move(element);
            return true;
        });
    }
    std::optional<T> operator[](std::size_t index) const {
        return elements_.read([&](const Elements& elements) {
            return index < elements.size() ? std::optional<T>(elements[index]) : std::nullopt;
        });
    }
    std::optional<T> first() const { return (*this)[0]; }
    std::size_t count() const {
        return elements_.read([](const Elements& elements) { return elements.size(); });
    }

private:
    using Elements = std::vector<T>;
    ReadWriteBox<Elements> elements_;
};

}  // namespace tarvo
