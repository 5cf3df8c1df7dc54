#include "tarvobase/configuration/UserDefaults.h"

#include <algorithm>

#include "platform/ProcessState.h"
#include "platform/SettingsStore.h"
#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/notification/BrenNotificationCenter.h"

namespace tarvo {

namespace {

constexpr std::string_view groupMark = "#CRM#";
constexpr std::string_view baseGroupMark = "#BaseGroup";
constexpr std::string_view baseGroup = "BaseGroup";

void notify(const Value& newValue, const std::string& key, const UserDefaultsGroup& group) {
    auto groupText = group.text();
    BrenNotificationCenter::shared().notifyThose<UserDefaultsValueObserver>(
        [&](UserDefaultsValueObserver& observer) {
            return text::contains(observer.observingKeys(), key) &&
                   text::contains(observer.observingGroups(), groupText);
        },
        false,
        [newValue, key, groupText](UserDefaultsValueObserver& observer) {
            observer.newValue(newValue, key, groupText);
        });
}

std::shared_ptr<platform::SettingsStore> configuredSuite() {
    auto& configuration = CommonConfigration::sharedInstance();
    auto home = configuration.localDirectoryLocation.get();
    return platform::ProcessState::current().get<SettingsStores>().suite(
        configuration.userDefaultsGroup.get().value_or(""), home ? *home + "/settings" : "");
}

}  // namespace

std::string UserDefaultsGroup::text() const {
    switch (case_) {
        case Case::other:
            return text_;
        case Case::current:
            return CommonConfigration::sharedInstance().getCurrentAccountID().value_or("");
        case Case::base:
            return std::string(baseGroup);
        case Case::none:
            return {};
    }
    return {};
}

std::string UserDefaultsGroup::keyForKeyName(std::string_view key) const {
    std::string stored(key);
    return case_ == Case::none ? stored : stored.append(groupMark).append(text());
}

BrenUserDefaults::BrenUserDefaults() : userDefaults_(configuredSuite()) {}
BrenUserDefaults::BrenUserDefaults(std::string account)
    : account_(std::move(account)), userDefaults_(configuredSuite()) {}

std::shared_ptr<BrenUserDefaults> BrenUserDefaults::ofCurrentAccount() {
    return std::make_shared<BrenUserDefaults>(UserDefaultsGroup::current().text());
}

UserDefaultsGroup BrenUserDefaults::own(const Group& group) const {
    return account_ && group.isCurrent() ? Group::other(*account_) : group;
}

void BrenUserDefaults::synchronise() { userDefaults_->synchronise(); }

void BrenUserDefaults::store(Value value, const std::string& key, const Group& group) {
    notify(value, key, own(group));
    userDefaults_->set(keyOf(key, group), std::move(value));
}

void BrenUserDefaults::setString(const std::string& value, const std::string& forKey, const Group& forGroup) {
    store(value, forKey, forGroup);
}
void BrenUserDefaults::setSecureString(const std::string& value, const std::string& forKey, const Group& forGroup) {
    store(value, forKey, forGroup);
}
// A null value removes the key.
void BrenUserDefaults::setSecureArray(const std::optional<ValueList>& value, const std::string& forKey,
                                      const Group& forGroup) {
    store(value, forKey, forGroup);
}
void BrenUserDefaults::setSecureDictionary(const std::optional<ValueMap>& value, const std::string& forKey,
                                           const Group& forGroup) {
    store(value, forKey, forGroup);
}
void BrenUserDefaults::setInteger(std::int64_t value, const std::string& forKey, const Group& forGroup) {
    store(value, forKey, forGroup);
}
void BrenUserDefaults::setBool(bool value, const std::string& forKey, const Group& forGroup) {
    store(value, forKey, forGroup);
}
void BrenUserDefaults::setArray(const ValueList& value, const std::string& forKey, const Group& forGroup) {
    store(value, forKey, forGroup);
}
void BrenUserDefaults::setDictionary(const ValueMap& value, const std::string& forKey, const Group& forGroup) {
    store(value, forKey, forGroup);
}
void BrenUserDefaults::set(std::int64_t value, const std::string& forKey, const Group& andGroup) {
    store(value, forKey, andGroup);
}

std::optional<std::string> BrenUserDefaults::stringForKey(const std::string& key, const Group& forGroup) const {
    return userDefaults_->string(keyOf(key, forGroup));
}
std::optional<std::string> BrenUserDefaults::secureStringForKey(const std::string& key, const Group& forGroup) const {
    return stringForKey(key, forGroup);
}
std::optional<ValueList> BrenUserDefaults::secureArrayForKey(const std::string& key, const Group& forGroup) const {
    return arrayForKey(key, forGroup);
}
std::optional<ValueMap> BrenUserDefaults::secureDictionaryForKey(const std::string& key, const Group& forGroup) const {
    return dictionaryForKey(key, forGroup);
}
std::optional<std::int64_t> BrenUserDefaults::integerForKey(const std::string& key, const Group& forGroup) const {
    return userDefaults_->integer(keyOf(key, forGroup));
}
std::optional<bool> BrenUserDefaults::boolForKey(const std::string& key, const Group& forGroup) const {
    return userDefaults_->boolean(keyOf(key, forGroup));
}
std::optional<ValueList> BrenUserDefaults::arrayForKey(const std::string& key, const Group& forGroup) const {
    return userDefaults_->list(keyOf(key, forGroup));
}
std::optional<ValueMap> BrenUserDefaults::dictionaryForKey(const std::string& key, const Group& forGroup) const {
    return userDefaults_->map(keyOf(key, forGroup));
}
std::optional<std::int64_t> BrenUserDefaults::int64(const std::string& forKey, const Group& andGroup) const {
    return integerForKey(forKey, andGroup);
}

void BrenUserDefaults::removeValueForKey(const std::string& key, const Group& inGroup) {
    userDefaults_->remove(keyOf(key, inGroup));
}
void BrenUserDefaults::removeSecureStringForKey(const std::string& key, const Group& inGroup) {
    removeValueForKey(key, inGroup);
}

void BrenUserDefaults::removeAllStoredValues() {
    userDefaults_->removeKeys([](std::string_view key) {
        return key.find(groupMark) != std::string_view::npos || key.find(baseGroupMark) != std::string_view::npos;
    });
}

void BrenUserDefaults::removeValues(platform::FunctionRef<bool(std::string_view key)> chosen, const Group& inGroup) {
    auto mark = keyOf("", inGroup);
    userDefaults_->removeKeys([&](std::string_view key) {
        if (!key.ends_with(mark)) return false;
        key.remove_suffix(mark.size());
        return chosen(key);
    });
}

void BrenUserDefaults::addObserver(const std::shared_ptr<UserDefaultsValueObserver>& observer) {
    BrenNotificationCenter::shared().add<UserDefaultsValueObserver>(observer);
}

// The new value is known only under the store's lock. Observers are notified as soon as the lock is released.
bool BrenUserDefaults::update(const std::string& key, const Group& inGroup,
                              platform::FunctionRef<Value(const Value&)> next, SettingsFlush flush) {
    auto stored = userDefaults_->update(keyOf(key, inGroup), next, flush);
    if (stored) notify(*stored, key, own(inGroup));
    return stored.has_value();
}

}  // namespace tarvo
