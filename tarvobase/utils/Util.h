#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/dates/Dates.h"

namespace tarvo {

class UserDefaultsProtocol;

template <class T>
struct DeepUnwrapped {
    using Type = T;
};
template <class T>
struct DeepUnwrapped<std::optional<T>> : DeepUnwrapped<T> {};

/// Helpers that the operations share. Any thread may use them.
class Util {
public:
    /// The fixed formats. Each is made once.
    struct DateFormatters {
        static const DateFormatter& iso8601DateFormatter();
        static const DateFormatter& isoDateFormatter() { return iso8601DateFormatter(); }
        static const DateFormatter& dateOnlyFormatter();
        static const DateFormatter& timeOnlyFormatter();
        static const DateFormatter& monthDateYear();
        static const DateFormatter& dateMonthFormatter();
        static const DateFormatter& monthDateFormatter();
        /// Returns the user's date and time with " at " between them. The formats are taken at the account's first use
        /// and do not follow later changes.
        static DateFormatter dateAtTimeFormatter();
    };

    /// Return the current formats of the account at work, or the locale's until the account's are known.
    static DateFormatter dateFormatter();
    static DateFormatter timeFormatter();
    static DateFormatter dateTimeFormatter();

    /// Reads the formats from these settings and follows their changes from now on. It is called once at the start; the
    /// formats then follow each switch of account by themselves.
    static void performInitialOperations(const std::shared_ptr<UserDefaultsProtocol>& userDefaults);

    /// Returns "TarvoTEMPID#" and a new UUID.
    static std::string getNewRecordId();

    /// Returns the value inside any number of optionals, or nullopt if one of them is empty.
    template <class T>
    static std::optional<typename DeepUnwrapped<T>::Type> deepUnwrap(const T& value) {
        return value;
    }
    template <class T>
    static std::optional<typename DeepUnwrapped<T>::Type> deepUnwrap(const std::optional<T>& value) {
        if (!value) return std::nullopt;
        return deepUnwrap(*value);
    }
};

}  // namespace tarvo
