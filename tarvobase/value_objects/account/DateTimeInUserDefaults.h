#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tarvobase/configuration/UserDefaults.h"

namespace tarvo {

/// The store of the account's date and time formats, which are patterns.
class DateTimePersistanceDelegate : public virtual platform::Object {
public:
    virtual void storeDateFormat(const std::string& dateFormat) = 0;
    virtual void storeTimeFormat(const std::string& timeFormat) = 0;
    virtual std::optional<std::string> getDateFormat() const = 0;
    virtual std::optional<std::string> getTimeFormat() const = 0;
};

class DateTimeInUserDefaults final : public DateTimePersistanceDelegate {
public:
    static constexpr const char* dateFormatKey = "TarvoDateFormat";
    static constexpr const char* timeFormatKey = "TarvoTimeFormat";

    explicit DateTimeInUserDefaults(std::shared_ptr<UserDefaultsProtocol> userDefaults)
        : userDefaults_(std::move(userDefaults)) {}
    void storeDateFormat(const std::string& dateFormat) override {
        userDefaults_->setString(dateFormat, dateFormatKey, UserDefaultsGroup::current());
    }
    void storeTimeFormat(const std::string& timeFormat) override {
        userDefaults_->setString(timeFormat, timeFormatKey, UserDefaultsGroup::current());
    }
    std::optional<std::string> getDateFormat() const override {
        return userDefaults_->stringForKey(dateFormatKey, UserDefaultsGroup::current());
    }
    std::optional<std::string> getTimeFormat() const override {
        return userDefaults_->stringForKey(timeFormatKey, UserDefaultsGroup::current());
    }

private:
    std::shared_ptr<UserDefaultsProtocol> userDefaults_;
};

}  // namespace tarvo
