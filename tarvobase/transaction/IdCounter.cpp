#include "tarvobase/transaction/IdCounter.h"

#include <algorithm>
#include <utility>

#include "platform/Log.h"
#include "tarvobase/configuration/UserDefaults.h"

namespace tarvo {

IdCounter::IdCounter(std::string key, std::shared_ptr<UserDefaultsProtocol> userDefaults)
    : key_(std::move(key)), userDefaults_(std::move(userDefaults)) {}

// All accounts share one counter, since an id does not say which account it belongs to.
std::int64_t IdCounter::next(std::int64_t highest) {
    std::int64_t number = 0;
    bool isStored = userDefaults_->update(key_, UserDefaultsGroup::base(), [&](const Value& last) {
        number = std::max({last.asInteger().value_or(0), last_.load(), highest}) + 1;
        last_ = number;  // under the store's lock, so that the counter never falls back
        return Value(number);
    });
    if (isStored) return number;
    platform::log(platform::LogLevel::warning, "transactions", "the counter " + key_ + " could not be stored");
    return number > 0 ? number : last_ = std::max(last_.load(), highest) + 1;
}

void IdCounter::reset() {
    userDefaults_->update(key_, UserDefaultsGroup::base(), [&](const Value&) {
        last_ = 0;
        return Value();
    });
}

}  // namespace tarvo
