#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tarvo::platform {

/// The rules of a time zone. Immutable, safe from any thread.
class LocalZone {
public:
    /// The same object for the same name. An unknown name is logged once and gives UTC.
    static std::shared_ptr<const LocalZone> named(const std::string& name);
    /// The zone of `Clock::timeZone()`, looked up once and after each `Clock::setTimeZone`.
    static const std::shared_ptr<const LocalZone>& inForce();

    ~LocalZone();

    /// "Europe/Berlin".
    const std::string& name() const { return name_; }
    /// Seconds ahead of UTC at a moment.
    std::int32_t offsetAt(std::int64_t secondsSince1970) const;
    /// The first moment of a day, given as days since 1970; nullopt for a day that the zone left out. If a day
    /// has two midnights it is the later one, as in ICU.
    std::optional<std::int64_t> startOfDay(std::int64_t day) const;

private:
    struct Rules;
    LocalZone(std::string name, std::unique_ptr<Rules> rules);
    std::string name_;
    std::unique_ptr<Rules> rules_;
};

}  // namespace tarvo::platform
