#pragma once

#include <optional>
#include <unordered_map>
#include <utility>

#include "tarvobase/utils/ReadWriteBox.h"

namespace tarvo {

/// A dictionary that any thread may use. Reads run side by side. A write is complete when the call returns, so every
/// later read sees it. A key may be present without a value; reading it returns nullopt, as for an absent key.
template <class K, class V>
class SynchronizedDictionary {
public:
    std::optional<V> operator[](const K& key) const {
        return dictionary_.read([&](const Dictionary& dictionary) {
            auto found = dictionary.find(key);
            return found == dictionary.end() ? std::nullopt : found->second;
        });
    }
    bool contains(const K& key) const {
        return dictionary_.read([&](const Dictionary& dictionary) { return dictionary.contains(key); });
    }
    /// Sets or replaces the value of a key. With nullopt the key is present without a value.
    void addValue(const K& key, std::optional<V> value) {
        dictionary_.write([&](Dictionary& dictionary) { dictionary.insert_or_assign(key, std::move(value)); });
    }
    /// Removes a key and returns the value that it had.
    std::optional<V> removeValue(const K& key) {
        return dictionary_.write([&](Dictionary& dictionary) {
            auto node = dictionary.extract(key);
            return node ? std::move(node.mapped()) : std::nullopt;
        });
    }

private:
    using Dictionary = std::unordered_map<K, std::optional<V>>;
    // All users read far more often than they write, so reads run side by side.
    ReadWriteBox<Dictionary> dictionary_;
};

}  // namespace tarvo
