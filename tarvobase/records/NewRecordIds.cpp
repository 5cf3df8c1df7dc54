#include "tarvobase/records/NewRecordIds.h"

#include <algorithm>
#include <cstdio>

#include "platform/Log.h"
#include "tarvobase/configuration/UserDefaults.h"

namespace tarvo {

namespace {

const std::string lastRecordId = "lastRecordId";

std::string idOf(std::int64_t number) {
    char text[32];
    std::snprintf(text, sizeof text, "NEW_%09lld", static_cast<long long>(number));
    return text;
}

}  // namespace

NewRecordIds::NewRecordIds(std::shared_ptr<UserDefaultsProtocol> userDefaults)
    : userDefaults_(std::move(userDefaults)) {}

// All accounts share one counter, since an id does not say which account it belongs to.
std::string NewRecordIds::getNewRecordId() {
    std::int64_t number = 0;
    bool stored = userDefaults_->update(lastRecordId, UserDefaultsGroup::base(), [&](const Value& last) {
        number = std::max(last.asInteger().value_or(0), last_.load()) + 1;
        last_ = number;  // under the store's lock, so that the counter never falls back
        return Value(number);
    });
    if (stored) return idOf(number);
    platform::log(platform::LogLevel::warning, "records", "the counter of new records could not be stored");
    return idOf(number > 0 ? number : ++last_);
}

void NewRecordIds::resetRecordId() {
    userDefaults_->update(lastRecordId, UserDefaultsGroup::base(), [&](const Value&) {
        last_ = 0;
        return Value();
    });
}

}  // namespace tarvo
