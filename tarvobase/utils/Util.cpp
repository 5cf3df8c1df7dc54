#include "tarvobase/utils/Util.h"

#include "platform/ProcessState.h"
#include "platform/Random.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/utils/TemporaryIds.h"

namespace tarvo {

namespace {

const std::string dateFormatKey = "TarvoDateFormat";
const std::string timeFormatKey = "TarvoTimeFormat";

using Style = DateFormatter::Style;

/// The user's formats. Patterns arrive one by one; a formatter is made when its pattern is set.
class UserFormats final : public UserDefaultsValueObserver {
public:
    DateFormatter date() const { return read(&UserFormats::date_); }
    DateFormatter time() const { return read(&UserFormats::time_); }
    DateFormatter dateTime() const { return read(&UserFormats::dateTime_); }
    DateFormatter dateAtTime() {
        platform::MutexLock lock(mutex_);
        if (!dateAtTime_) dateAtTime_ = DateFormatter::pattern(date_.pattern() + "' at '" + time_.pattern());
        return *dateAtTime_;
    }

    void set(const std::string& key, std::string format) {
        platform::MutexLock lock(mutex_);
        (key == dateFormatKey ? dateFormat_ : timeFormat_) = std::move(format);
        setDateFormatters();
    }

    std::vector<std::string> observingKeys() const override { return {dateFormatKey, timeFormatKey}; }
    std::vector<std::string> observingGroups() const override { return {UserDefaultsGroup::current().text()}; }
    void newValue(const Value& value, const std::string& forKey, const std::string&) override {
        if (auto format = value.asText()) set(forKey, *format);
    }

private:
    DateFormatter read(DateFormatter UserFormats::*formatter) const {
        platform::MutexLock lock(mutex_);
        return this->*formatter;
    }
    void setDateFormatters() TARVO_REQUIRES(mutex_) {
        if (dateFormat_) date_ = DateFormatter::pattern(*dateFormat_);
        if (timeFormat_) time_ = DateFormatter::pattern(*timeFormat_);
        if (dateFormat_ && timeFormat_) dateTime_ = DateFormatter::pattern(*dateFormat_ + " " + *timeFormat_);
    }

    mutable platform::Mutex mutex_;
    std::optional<std::string> dateFormat_ TARVO_GUARDED_BY(mutex_), timeFormat_ TARVO_GUARDED_BY(mutex_);
    DateFormatter date_ TARVO_GUARDED_BY(mutex_) = DateFormatter::styles(Style::medium, Style::none, {});
    DateFormatter time_ TARVO_GUARDED_BY(mutex_) = DateFormatter::styles(Style::none, Style::short_, {});
    DateFormatter dateTime_ TARVO_GUARDED_BY(mutex_) = DateFormatter::styles(Style::medium, Style::short_, {});
    std::optional<DateFormatter> dateAtTime_ TARVO_GUARDED_BY(mutex_);
};

struct SharedFormats {
    std::shared_ptr<UserFormats> formats = std::make_shared<UserFormats>();
};

const std::shared_ptr<UserFormats>& userFormats() {
    return platform::ProcessState::current().get<SharedFormats>().formats;
}

}  // namespace

const DateFormatter& Util::DateFormatters::iso8601DateFormatter() {
    static const auto formatter = DateFormatter::pattern(std::string(DateFormatter::iso8601Pattern));
    return formatter;
}
const DateFormatter& Util::DateFormatters::dateOnlyFormatter() {
    static const auto formatter = DateFormatter::pattern(std::string(DateFormatter::dateOnlyPattern));
    return formatter;
}
const DateFormatter& Util::DateFormatters::timeOnlyFormatter() {
    static const auto formatter = DateFormatter::pattern("HH:mm");
    return formatter;
}
const DateFormatter& Util::DateFormatters::monthDateYear() {
    static const auto formatter = DateFormatter::pattern("MMM d, yyyy");
    return formatter;
}
const DateFormatter& Util::DateFormatters::dateMonthFormatter() {
    static const auto formatter = DateFormatter::pattern("d MMM");
    return formatter;
}
const DateFormatter& Util::DateFormatters::monthDateFormatter() {
    static const auto formatter = DateFormatter::pattern("MMM d");
    return formatter;
}
DateFormatter Util::DateFormatters::dateAtTimeFormatter() { return userFormats()->dateAtTime(); }

DateFormatter Util::dateFormatter() { return userFormats()->date(); }
DateFormatter Util::timeFormatter() { return userFormats()->time(); }
DateFormatter Util::dateTimeFormatter() { return userFormats()->dateTime(); }

void Util::performInitialOperations(const std::shared_ptr<UserDefaultsProtocol>& userDefaults) {
    for (auto& key : {dateFormatKey, timeFormatKey})
        if (auto format = userDefaults->stringForKey(key, UserDefaultsGroup::current()))
            userFormats()->set(key, *format);
    userDefaults->addObserver(userFormats());
}

std::string Util::getNewRecordId() { return std::string(tempIDPrefix) + platform::Random::uuid(); }

}  // namespace tarvo
