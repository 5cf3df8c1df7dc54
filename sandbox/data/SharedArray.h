#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <utility>

namespace tarvo::sandbox {

/// Holds 64 nodes of the level below, or on the lowest level 64 values.
template <class T, std::size_t level>
struct SharedNode {
    std::array<std::shared_ptr<const SharedNode<T, level - 1>>, 64> below;
};
template <class T>
struct SharedNode<T, 0> {
    std::array<std::optional<T>, 64> values;
};

/// A sparse array of up to sixteen million values whose copies share what they have in common: a copy is one pointer,
/// and setting a value copies four nodes, however many values there are. One array may be read by many threads.
template <class T>
class SharedArray {
public:
    static constexpr std::size_t capacity = std::size_t(1) << 24;

    /// Returns null when no value was set. Valid until the value is set again in the last array that holds it.
    const T* find(std::size_t index) const { return find(root_.get(), index); }
    void set(std::size_t index, T value) { root_ = with(root_, index, std::move(value)); }
    /// Calls `visit` with the index and the value of all that were set, in order.
    template <class Visit>
    void forEach(Visit&& visit) const {
        forEach(root_.get(), 0, visit);
    }

private:
    static constexpr std::size_t bits = 6;

    template <std::size_t level>
    static std::size_t place(std::size_t index) {
        return index >> (bits * level) & 63;
    }

    template <std::size_t level>
    static const T* find(const SharedNode<T, level>* node, std::size_t index) {
        if (!node) return nullptr;
        if constexpr (level > 0)
            return find(node->below[place<level>(index)].get(), index);
        else
            return node->values[place<level>(index)] ? &*node->values[place<level>(index)] : nullptr;
    }

    template <std::size_t level>
    static std::shared_ptr<const SharedNode<T, level>> with(const std::shared_ptr<const SharedNode<T, level>>& node,
                                                            std::size_t index, T value) {
        using Node = SharedNode<T, level>;
        auto copy = node ? std::make_shared<Node>(*node) : std::make_shared<Node>();
        if constexpr (level > 0) {
            auto& below = copy->below[place<level>(index)];
            below = with(below, index, std::move(value));
        } else {
            copy->values[place<level>(index)] = std::move(value);
        }
        return copy;
    }

    template <std::size_t level, class Visit>
    static void forEach(const SharedNode<T, level>* node, std::size_t first, Visit& visit) {
        if (!node) return;
        for (std::size_t i = 0; i < 64; ++i) {
            auto index = first + (i << (bits * level));
            if constexpr (level > 0)
                forEach(node->below[i].get(), index, visit);
            else if (node->values[i])
                visit(index, *node->values[i]);
        }
    }

    std::shared_ptr<const SharedNode<T, 3>> root_;
};

}  // namespace tarvo::sandbox
