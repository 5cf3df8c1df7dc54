#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/Value.h"

namespace tarvo::sandbox {

/// Records one change that was applied.
struct AppliedChange {
    /// The key of the request; empty for a request without one and for control calls.
    std::string key;
    /// The name of the call: "products/addrecord", "control/records".
    std::string call;
    std::string account;
    std::string module;
    std::string id;
    std::string_view kind;
    /// Milliseconds of the server's clock.
    std::int64_t time = 0;
    /// What the client sent for this record; null for a delete and for changes long ago.
    Value payload = {};
};

/// Keeps the applied changes in order, and the answers of keys, so that a request that is sent again is answered as
/// before. Both are lost when the server ends. A caller holds the server's lock.
class ChangeLog {
public:
    void add(AppliedChange change);
    /// Returns the last 100,000 changes in the order in which they were applied, the last 10,000 with their payloads.
    ValueList all() const;

    void keep(const std::string& key, const Value& answer);
    /// Returns the answer that the key got at first; nullopt for an unknown key. Keys are forgotten, the oldest first,
    /// when their answers take more than 256 megabytes.
    std::optional<Value> answerOf(const std::string& key) const;

private:
    static constexpr std::size_t mostChanges = 100'000;
    static constexpr std::size_t mostPayloads = 10'000;
    static constexpr std::size_t mostAnswerBytes = 256u << 20;

    std::deque<AppliedChange> changes_;
    std::int64_t total_ = 0;
    /// JSON texts by key, which take less memory than values.
    std::unordered_map<std::string, std::string> answers_;
    std::deque<std::string> keys_;
    std::size_t answerBytes_ = 0;
};

}  // namespace tarvo::sandbox
