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

/// The formats of the account at work. They are read from the settings when the account changes, so that no format of
/// a former account stays, and they follow changes of the settings. A formatter is made when its pattern is set.
class UserFormats final : public UserDefaultsValueObserver {
public:
    DateFormatter date() { return read(&Formatters::date); }
    DateFormatter time() { return read(&Formatters::time); }
    DateFormatter dateTime() { return read(&Formatters::dateTime); }
    DateFormatter dateAtTime() {
        auto account = currentAccount();
        platform::MutexLock lock(mutex_);
        useFormatsOf(account);
        if (!formatters_.dateAtTime)
            formatters_.dateAtTime =
                DateFormatter::pattern(formatters_.date.pattern() + "' at '" + formatters_.time.pattern());
        return *formatters_.dateAtTime;
    }

    /// Reads from these settings from now on.
    void follow(std::shared_ptr<UserDefaultsProtocol> userDefaults) {
        auto account = currentAccount();
        platform::MutexLock lock(mutex_);
        userDefaults_ = std::move(userDefaults);
        auto fixed = account == account_ ? formatters_.dateAtTime : std::nullopt;
        account_.reset();
        useFormatsOf(account);
        formatters_.dateAtTime = fixed;
    }

    std::vector<std::string> observingKeys() const override { return {dateFormatKey, timeFormatKey}; }
    std::vector<std::string> observingGroups() const override { return {currentAccount()}; }
    void newValue(const Value& value, const std::string& forKey, const std::string& inGroup) override {
        auto format = value.asText();
        if (!format) return;
        platform::MutexLock lock(mutex_);
        useFormatsOf(inGroup);
        set(forKey, *format);
    }

private:
    struct Formatters {
        std::optional<std::string> datePattern, timePattern;
        DateFormatter date = DateFormatter::styles(Style::medium, Style::none, {});
        DateFormatter time = DateFormatter::styles(Style::none, Style::short_, {});
        DateFormatter dateTime = DateFormatter::styles(Style::medium, Style::short_, {});
        std::optional<DateFormatter> dateAtTime;
    };

    static std::string currentAccount() { return UserDefaultsGroup::current().text(); }

    DateFormatter read(DateFormatter Formatters::*formatter) {
        auto account = currentAccount();
        platform::MutexLock lock(mutex_);
        useFormatsOf(account);
        return formatters_.*formatter;
    }
    // The lock is held while the settings are read, so that a change which is announced meanwhile is not overwritten.
    void useFormatsOf(const std::string& account) TARVO_REQUIRES(mutex_) {
        if (account_ == account) return;
        account_ = account;
        formatters_ = Formatters();
        if (!userDefaults_) return;
        for (auto& key : {dateFormatKey, timeFormatKey})
            if (auto format = userDefaults_->stringForKey(key, UserDefaultsGroup::other(account))) set(key, *format);
    }
    void set(const std::string& key, const std::string& format) TARVO_REQUIRES(mutex_) {
        auto& [datePattern, timePattern, date, time, dateTime, dateAtTime] = formatters_;
        (key == dateFormatKey ? datePattern : timePattern) = format;
        if (datePattern) date = DateFormatter::pattern(*datePattern);
        if (timePattern) time = DateFormatter::pattern(*timePattern);
        if (datePattern && timePattern) dateTime = DateFormatter::pattern(*datePattern + " " + *timePattern);
    }

    platform::Mutex mutex_;
    std::shared_ptr<UserDefaultsProtocol> userDefaults_ TARVO_GUARDED_BY(mutex_);
    std::optional<std::string> account_ TARVO_GUARDED_BY(mutex_);  // whose formats these are
    Formatters formatters_ TARVO_GUARDED_BY(mutex_);
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
    userFormats()->follow(userDefaults);
    userDefaults->addObserver(userFormats());
}

std::string Util::getNewRecordId() { return std::string(tempIDPrefix) + platform::Random::uuid(); }

}  // namespace tarvo
