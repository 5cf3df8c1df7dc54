#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "tarvobase/utils/ReadWriteBox.h"

namespace tarvo {

/// A list that any thread may use, with the discipline of `SynchronizedDictionary`. Between a look at `count` and the
/// next call other threads may have changed the list, so an index out of range is no error: it reads as nothing and
/// changes nothing.
template <class T>
class SynchronizedArray {
public:
    void append(T newElement) {
        elements_.write([&](Elements& elements) { elements.push_back(std::move(newElement)); });
    }
    /// The element that was removed.
    std::optional<T> removeAtIndex(std::size_t index) {
        return elements_.write([&](Elements& elements) -> std::optional<T> {
            if (index >= elements.size()) return std::nullopt;
            std::optional<T> removed(std::move(elements[index]));
            elements.erase(elements.begin() + static_cast<std::ptrdiff_t>(index));
            return removed;
        });
    }
    /// False when there is no such index.
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
