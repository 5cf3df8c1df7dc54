#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tarvo::platform {

/// The one source of time. Wall time may be set by tests and by a host's scripts; then it stands still until it is
/// moved, and timers follow it. Nothing else in the project asks the system for the time, sleeps, or draws random
/// numbers. All operations are safe from any thread.
class Clock {
public:
    using WallTime = std::chrono::sys_time<std::chrono::milliseconds>;
    using SteadyTime = std::chrono::steady_clock::time_point;

    /// Wall time in UTC, to the millisecond.
    static WallTime now();
    /// Whole seconds since 1970, rounded down.
    static std::int64_t secondsSince1970();
    /// Never goes back and measures durations. While the wall clock is set by hand it moves with `advance` alone.
    static SteadyTime steadyNow();

    /// Stops the wall clock at a time. Timers then fire only through `advance`.
    static void set(WallTime time);
    /// Moves a stopped clock forward and makes every timer that has become due fire, in the order of their times.
    static void advance(std::chrono::milliseconds by);
    /// The system's time again.
    static void release();
    static bool isSet();

    /// Name of the time zone in force ("Europe/Berlin"). The system's unless a test or a script has set one.
    static std::string timeZone();
    /// Sets the zone for the process; nullopt goes back to the system's zone.
    static void setTimeZone(std::optional<std::string> name);
    /// Grows with every `setTimeZone`. Asking for the zone reads files; whoever asks often keeps the answer by this.
    static std::uint64_t timeZoneVersion();

    /// Called after every `set`, `advance` and `release`, on the thread that did it. For the timer service.
    static void onChange(std::function<void()> callback);
};

}  // namespace tarvo::platform
