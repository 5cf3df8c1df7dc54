#include "tarvobase/utils/UserDefaultsUtil.h"

#include <algorithm>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/Random.h"
#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/utils/TemporaryIds.h"

namespace tarvo {

namespace {

const std::string syncTimeSuffix = "LFRecordSyncTime";
const std::string hasMoreSuffix = "LFHasMoreRecord";
const std::string lastAddedSuffix = "LFLastAddedRecord";
const std::string laterPagesSuffix = "LFHasLaterPages";
const std::string lastUpdatedSuffix = "LFLastUpdatedTime";
const std::string lastSelectedModule = "lastSelectedModule";
const std::string moduleOrder = "moduleOrder";
const std::string progressPercent = "_progressPercent";
const std::string completedSuffix = "_downloadable";
const std::string missingSteps = "stepsWithoutContent";
const std::string lastTemporaryNumber = "lastTemporaryRecordNumber";

UserDefaultsGroup ofAccount() { return UserDefaultsGroup::current(); }

std::string listKey(const std::string& moduleName, const std::string& criteriaId, const std::string& suffix) {
    return moduleName + "_" + criteriaId + "_" + suffix;
}
std::string moduleKey(const std::string& moduleName, const std::string& suffix) { return moduleName + "_" + suffix; }

}  // namespace

UserDefaultsUtil::UserDefaultsUtil(std::shared_ptr<UserDefaultsProtocol> userDefaults)
    : userDefaults_(std::move(userDefaults)) {}

std::string UserDefaultsUtil::getNewRecordId() {
    auto number = platform::Clock::secondsSince1970();
    // All accounts share one counter, so that an id is unique among all of them.
    bool stored = userDefaults_->update(lastTemporaryNumber, UserDefaultsGroup::base(), [&](const Value& last) {
        number = std::max(number, last.asInteger().value_or(0) + 1);
        return Value(number);
    });
    if (stored) return std::string(tempIDPrefix) + std::to_string(number);
    platform::log(platform::LogLevel::warning, "utils",
                  "the number of a temporary record could not be stored: a random one is used");
    return std::string(tempIDPrefix) + std::to_string(platform::Random::number());
}

bool UserDefaultsUtil::isCompleted(const std::string& step) const {
    return userDefaults_->boolForKey(step + completedSuffix, ofAccount()).value_or(false);
}
void UserDefaultsUtil::setCompleted(const std::string& step) {
    userDefaults_->setBool(true, step + completedSuffix, ofAccount());
}
void UserDefaultsUtil::noteMissing(const std::vector<std::string>& steps, const std::set<std::string>& missing) {
    // Almost every batch is complete, and then there is nothing to write.
    if (missing.empty() && !userDefaults_->arrayForKey(missingSteps, ofAccount())) return;
    userDefaults_->update(missingSteps, ofAccount(), [&](const Value& present) -> Value {
        auto noted = present.asList() ? *present.asList() : ValueList();
        for (auto& step : steps) std::erase(noted, Value(step));
        for (auto& step : steps)
            if (missing.contains(step)) noted.emplace_back(step);
        return noted.empty() ? Value() : Value(std::move(noted));
    });
}
void UserDefaultsUtil::requestMissingAgain() {
    for (auto& step : userDefaults_->arrayForKey(missingSteps, ofAccount()).value_or(ValueList()))
        if (step.asText()) userDefaults_->removeValueForKey(*step.asText() + completedSuffix, ofAccount());
}
void UserDefaultsUtil::forgetContent() {
    userDefaults_->removeValues(
        [](std::string_view key) {
            return key.ends_with(completedSuffix) || key.ends_with(syncTimeSuffix) || key.ends_with(hasMoreSuffix) ||
                   key.ends_with(lastUpdatedSuffix) || key.ends_with(lastAddedSuffix) ||
                   key.ends_with(laterPagesSuffix) || key == progressPercent || key == missingSteps;
        },
        ofAccount());
}
int UserDefaultsUtil::getProgressPercent() const {
    return static_cast<int>(
        std::clamp<std::int64_t>(userDefaults_->integerForKey(progressPercent, ofAccount()).value_or(0), 0, 100));
}
void UserDefaultsUtil::setProgressPercent(int percent) {
    userDefaults_->setInteger(percent, progressPercent, ofAccount());
}

std::optional<std::int64_t> UserDefaultsUtil::getListFilterRecordSyncTime(const std::string& moduleName,
                                                                          const std::string& criteriaId) const {
    return userDefaults_->int64(listKey(moduleName, criteriaId, syncTimeSuffix), ofAccount());
}
void UserDefaultsUtil::setListFilterRecordSyncTime(std::int64_t time, const std::string& moduleName,
                                                   const std::string& criteriaId) {
    userDefaults_->set(time, listKey(moduleName, criteriaId, syncTimeSuffix), ofAccount());
}
bool UserDefaultsUtil::getListFilterHasMoreRecord(const std::string& moduleName, const std::string& criteriaId) const {
    return userDefaults_->boolForKey(listKey(moduleName, criteriaId, hasMoreSuffix), ofAccount()).value_or(true);
}
void UserDefaultsUtil::setListFilterHasMoreRecord(bool hasMore, const std::string& moduleName,
                                                  const std::string& criteriaId) {
    userDefaults_->setBool(hasMore, listKey(moduleName, criteriaId, hasMoreSuffix), ofAccount());
}
std::int64_t UserDefaultsUtil::getListFilterLastAddedRecord(const std::string& moduleName,
                                                            const std::string& criteriaId) const {
    return userDefaults_->int64(listKey(moduleName, criteriaId, lastAddedSuffix), ofAccount()).value_or(0);
}
void UserDefaultsUtil::setListFilterLastAddedRecord(std::int64_t number, const std::string& moduleName,
                                                    const std::string& criteriaId) {
    userDefaults_->set(number, listKey(moduleName, criteriaId, lastAddedSuffix), ofAccount());
}
bool UserDefaultsUtil::getListFilterHasLaterPages(const std::string& moduleName, const std::string& criteriaId) const {
    return userDefaults_->boolForKey(listKey(moduleName, criteriaId, laterPagesSuffix), ofAccount()).value_or(false);
}
void UserDefaultsUtil::setListFilterHasLaterPages(bool hasLaterPages, const std::string& moduleName,
                                                  const std::string& criteriaId) {
    if (hasLaterPages == getListFilterHasLaterPages(moduleName, criteriaId)) return;
    userDefaults_->setBool(hasLaterPages, listKey(moduleName, criteriaId, laterPagesSuffix), ofAccount());
}
void UserDefaultsUtil::resetListFilter(const std::string& moduleName, const std::string& criteriaId) {
    userDefaults_->removeValueForKey(listKey(moduleName, criteriaId, syncTimeSuffix), ofAccount());
    userDefaults_->removeValueForKey(listKey(moduleName, criteriaId, lastAddedSuffix), ofAccount());
    userDefaults_->removeValueForKey(listKey(moduleName, criteriaId, laterPagesSuffix), ofAccount());
    setListFilterHasMoreRecord(true, moduleName, criteriaId);
}

std::optional<std::int64_t> UserDefaultsUtil::getListFilterLastUpdatedTime(const std::string& moduleName) const {
    return userDefaults_->int64(moduleKey(moduleName, lastUpdatedSuffix), ofAccount());
}
void UserDefaultsUtil::setListFilterLastUpdatedTime(std::int64_t time, const std::vector<std::string>& moduleNames) {
    for (auto& name : moduleNames) userDefaults_->set(time, moduleKey(name, lastUpdatedSuffix), ofAccount());
}

std::optional<std::string> UserDefaultsUtil::getLastSelectedModule() const {
    return userDefaults_->stringForKey(lastSelectedModule, ofAccount());
}
void UserDefaultsUtil::setLastSelectedModule(const std::string& moduleName) {
    userDefaults_->setString(moduleName, lastSelectedModule, ofAccount());
}
std::optional<std::vector<std::string>> UserDefaultsUtil::getModuleOrder() const {
    auto stored = userDefaults_->arrayForKey(moduleOrder, ofAccount());
    if (!stored) return std::nullopt;
    std::vector<std::string> names;
    for (auto& name : *stored)
        if (name.asText()) names.push_back(*name.asText());
    return names;
}
void UserDefaultsUtil::setModuleOrder(const std::vector<std::string>& moduleNames) {
    userDefaults_->setArray(ValueList(moduleNames.begin(), moduleNames.end()), moduleOrder, ofAccount());
}

}  // namespace tarvo
