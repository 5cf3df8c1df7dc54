#include <atomic>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <mutex>

#include "platform/Clock.h"

namespace tarvo::platform {

namespace {

struct ZoneOfProcess {
    std::mutex mutex;
    std::optional<std::string> set;
    std::optional<std::string> environment;  // TZ as it was before a zone was set
    std::atomic<std::uint64_t> version = 0;

    static ZoneOfProcess& shared() {
        static auto* zone = new ZoneOfProcess;
        return *zone;
    }
};

std::optional<std::string> afterZoneInfo(const std::string& path) {
    constexpr std::string_view folder = "/zoneinfo/";
    auto at = path.rfind(folder);
    if (at == std::string::npos || at + folder.size() == path.size()) return std::nullopt;
    auto name = path.substr(at + folder.size());
    for (std::string_view variant : {"posix/", "right/"})
        if (name.starts_with(variant)) name.erase(0, variant.size());
    return name;
}

std::optional<std::string> variable() {
    auto* text = std::getenv("TZ");
    return text ? std::optional<std::string>(text) : std::nullopt;
}

// TZ as a name, ":Europe/Berlin" and a path into the zone files included; a rule such as "CET-1CEST" is passed on as
// it is, and whoever loads zones decides.
std::optional<std::string> fromEnvironment() {
    auto zone = variable();
    if (!zone) return std::nullopt;
    auto name = *std::move(zone);
    if (name.starts_with(':')) name.erase(0, 1);
    // Set but empty means UTC, as in the C library.
    if (name.empty()) return "UTC";
    if (name.front() == '/') return afterZoneInfo(name);
    return name;
}

std::optional<std::string> fromLocaltimeLink() {
    std::error_code error;
    auto target = std::filesystem::read_symlink("/etc/localtime", error);
    if (error) return std::nullopt;
    // The link itself first: resolving it to the end would answer with the name that an alias stands for.
    if (auto name = afterZoneInfo(target.string())) return name;
    auto resolved = std::filesystem::canonical("/etc/localtime", error);
    return error ? std::nullopt : afterZoneInfo(resolved.string());
}

std::optional<std::string> fromTimezoneFile() {
    std::ifstream file("/etc/timezone");
    std::string name;
    if (!std::getline(file, name) || name.empty()) return std::nullopt;
    return name;
}

// The C library tells local times to SQLite, and it knows of no other way to be told the zone. Changing the environment
// disturbs threads that read it at the same moment, which is why only tests and scripts set a zone.
void tellCLibrary(const std::optional<std::string>& zone) {
    if (zone)
        setenv("TZ", zone->c_str(), 1);
    else
        unsetenv("TZ");
    tzset();
}

std::string systemZone() {
    if (auto name = fromEnvironment()) return *name;
    if (auto name = fromLocaltimeLink()) return *name;
    // Where /etc/localtime is a copy of the zone's file instead of a link.
    if (auto name = fromTimezoneFile()) return *name;
    return "UTC";
}

}  // namespace

std::string Clock::timeZone() {
    auto& zone = ZoneOfProcess::shared();
    std::lock_guard lock(zone.mutex);
    return zone.set ? *zone.set : systemZone();
}

void Clock::setTimeZone(std::optional<std::string> name) {
    auto& zone = ZoneOfProcess::shared();
    std::lock_guard lock(zone.mutex);
    if (!zone.set && name) zone.environment = variable();
    if (zone.set || name) tellCLibrary(name ? name : zone.environment);
    zone.set = std::move(name);
    ++zone.version;
}

std::uint64_t Clock::timeZoneVersion() { return ZoneOfProcess::shared().version; }

}  // namespace tarvo::platform
