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

/// Helpers that the operations lean on. From any thread.
class Util {
public:
    /// The fixed formats, each made once.
    struct DateFormatters {
        static const DateFormatter& iso8601DateFormatter();
        static const DateFormatter& isoDateFormatter() { return iso8601DateFormatter(); }
        static const DateFormatter& dateOnlyFormatter();
        static const DateFormatter& timeOnlyFormatter();
        static const DateFormatter& monthDateYear();
        static const DateFormatter& dateMonthFormatter();
        static const DateFormatter& monthDateFormatter();
        /// The user's date and time with " at " between, as the two stand at the first use; later changes of them do
        /// not reach it.
        static DateFormatter dateAtTimeFormatter();
    };

    /// The user's formats as they stand now; the locale's until the user's are known.
    static DateFormatter dateFormatter();
    static DateFormatter timeFormatter();
    static DateFormatter dateTimeFormatter();

    /// Takes the formats of the current account from the settings and follows their changes from now on. Called at the
    /// start and after each switch of account.
    static void performInitialOperations(const std::shared_ptr<UserDefaultsProtocol>& userDefaults);

    /// "TarvoTEMPID#" and a new UUID.
    static std::string getNewRecordId();

    /// The value inside any number of optionals; absent as soon as one of them is.
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
