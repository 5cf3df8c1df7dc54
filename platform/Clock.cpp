#include "platform/Clock.h"

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

#include "platform/ThreadSafety.h"
#include "platform/internal/SystemZone.h"

namespace tarvo::platform {

namespace {

// What is set by hand. Never destroyed: the timer thread asks until the process ends.
struct HandSetClock {
    Mutex mutex;
    bool set TARVO_GUARDED_BY(mutex) = false;
    Clock::WallTime wall TARVO_GUARDED_BY(mutex){};
    Clock::SteadyTime steady TARVO_GUARDED_BY(mutex){};
    // What a clock set by hand has run ahead of the system's. Kept after the release, so that time never goes back.
    Clock::SteadyTime::duration ahead TARVO_GUARDED_BY(mutex){};
    std::vector<std::function<void()>> callbacks TARVO_GUARDED_BY(mutex);

    static HandSetClock& shared() {
        static auto* clock = new HandSetClock;
        return *clock;
    }

    Clock::SteadyTime steadyNow() const TARVO_REQUIRES(mutex) {
        return set ? steady : std::chrono::steady_clock::now() + ahead;
    }

    template <class Change>
    void change(Change&& change) {
        std::vector<std::function<void()>> told;
        {
            MutexLock lock(mutex);
            change();
            told = callbacks;
        }
        for (auto& callback : told) callback();
    }
};

struct ZoneOfProcess {
    Mutex mutex;
    std::optional<std::string> set TARVO_GUARDED_BY(mutex);
    std::optional<std::string> environment TARVO_GUARDED_BY(mutex);  // TZ as it was before a zone was set
    std::atomic<std::uint64_t> version = 0;

    static ZoneOfProcess& shared() {
        static auto* zone = new ZoneOfProcess;
        return *zone;
    }
};

}  // namespace

Clock::WallTime Clock::now() {
    auto& clock = HandSetClock::shared();
    MutexLock lock(clock.mutex);
    if (clock.set) return clock.wall;
    return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

std::int64_t Clock::secondsSince1970() {
    return std::chrono::floor<std::chrono::seconds>(now()).time_since_epoch().count();
}

Clock::SteadyTime Clock::steadyNow() {
    auto& clock = HandSetClock::shared();
    MutexLock lock(clock.mutex);
    return clock.steadyNow();
}

void Clock::set(WallTime time) {
    auto& clock = HandSetClock::shared();
    clock.change([&] {
        clock.mutex.assumeHeld();
        clock.steady = clock.steadyNow();
        clock.set = true;
        clock.wall = time;
    });
}

void Clock::advance(std::chrono::milliseconds by) {
    auto& clock = HandSetClock::shared();
    clock.change([&] {
        clock.mutex.assumeHeld();
        if (!clock.set || by < by.zero()) return;
        clock.wall += by;
        clock.steady += by;
    });
}

void Clock::release() {
    auto& clock = HandSetClock::shared();
    clock.change([&] {
        clock.mutex.assumeHeld();
        if (!clock.set) return;
        clock.ahead = std::max(clock.ahead, clock.steady - std::chrono::steady_clock::now());
        clock.set = false;
    });
}

bool Clock::isSet() {
    auto& clock = HandSetClock::shared();
    MutexLock lock(clock.mutex);
    return clock.set;
}

void Clock::onChange(std::function<void()> callback) {
    auto& clock = HandSetClock::shared();
    MutexLock lock(clock.mutex);
    clock.callbacks.push_back(std::move(callback));
}

std::string Clock::timeZone() {
    auto& zone = ZoneOfProcess::shared();
    MutexLock lock(zone.mutex);
    return zone.set ? *zone.set : systemZone();
}

void Clock::setTimeZone(std::optional<std::string> name) {
    auto& zone = ZoneOfProcess::shared();
    MutexLock lock(zone.mutex);
    if (!zone.set && name) zone.environment = zoneVariable();
    if (zone.set || name) setZoneVariable(name ? name : zone.environment);
    zone.set = std::move(name);
    ++zone.version;
}

std::uint64_t Clock::timeZoneVersion() { return ZoneOfProcess::shared().version; }

}  // namespace tarvo::platform
