#pragma once

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tarvo {

/// A dictionary that keeps its keys in order of insertion. Copies are independent. Finding takes constant time,
/// removing linear time.
template <class K, class V>
class OrderedDictionary {
public:
    OrderedDictionary() = default;

    /// Makes a dictionary from pairs of key and value. If several pairs have the same key, the first one stays: keys
    /// come from the server's metadata, where two fields may share a column.
    template <class Pairs>
    static OrderedDictionary uniqueKeysWithValues(Pairs&& pairs) {
        OrderedDictionary dictionary;
        for (auto&& [key, value] : pairs)
            if (!dictionary.contains(key)) dictionary.set(key, value);
        return dictionary;
    }
    static OrderedDictionary uniqueKeysWithValues(std::initializer_list<std::pair<K, V>> pairs) {
        return uniqueKeysWithValues<const std::initializer_list<std::pair<K, V>>&>(pairs);
    }

    /// Returns the value of a key, or null. The pointer is valid until the dictionary changes.
    const V* find(const K& key) const {
        auto found = keyValueMap_.find(key);
        return found == keyValueMap_.end() ? nullptr : &found->second;
    }
    V* find(const K& key) { return const_cast<V*>(std::as_const(*this).find(key)); }
    std::optional<V> operator[](const K& key) const {
        auto found = find(key);
        return found ? std::optional<V>(*found) : std::nullopt;
    }
    bool contains(const K& key) const { return keyValueMap_.contains(key); }

    /// Sets the value of a key. A new key goes to the end; a known key keeps its place.
    void set(const K& key, V value) {
        auto [place, added] = keyValueMap_.insert_or_assign(key, std::move(value));
        if (added) orderedKeys_.push_back(place->first);
    }
    /// Removes a key and returns the value that it had.
    std::optional<V> removeValue(const K& key) {
        auto node = keyValueMap_.extract(key);
        if (!node) return std::nullopt;
        orderedKeys_.erase(std::find(orderedKeys_.begin(), orderedKeys_.end(), node.key()));
        return std::move(node.mapped());
    }
    void removeAll() {
        orderedKeys_.clear();
        keyValueMap_.clear();
    }

    const std::vector<K>& keys() const { return orderedKeys_; }
    std::vector<V> values() const {
        std::vector<V> values;
        values.reserve(count());
        for (auto [key, value] : *this) values.push_back(value);
        return values;
    }
    std::size_t count() const { return orderedKeys_.size(); }
    bool isEmpty() const { return orderedKeys_.empty(); }

    /// Iterates over pairs of references in the order of the keys.
    class Iterator {
    public:
        Iterator(const OrderedDictionary& dictionary, std::size_t position)
            : dictionary_(&dictionary), position_(position) {}
        std::pair<const K&, const V&> operator*() const {
            auto& key = dictionary_->orderedKeys_[position_];
            return {key, dictionary_->keyValueMap_.find(key)->second};
        }
        Iterator& operator++() {
            ++position_;
            return *this;
        }
        friend bool operator==(const Iterator& a, const Iterator& b) { return a.position_ == b.position_; }

    private:
        const OrderedDictionary* dictionary_;
        std::size_t position_;
    };
    Iterator begin() const { return Iterator(*this, 0); }
    Iterator end() const { return Iterator(*this, count()); }

    /// Dictionaries are equal if they have the same keys in the same order with equal values.
    friend bool operator==(const OrderedDictionary& a, const OrderedDictionary& b) {
        return a.orderedKeys_ == b.orderedKeys_ && a.keyValueMap_ == b.keyValueMap_;
    }

private:
    std::vector<K> orderedKeys_;
    std::unordered_map<K, V> keyValueMap_;
};

}  // namespace tarvo
