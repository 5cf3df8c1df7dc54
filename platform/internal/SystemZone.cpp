#include "platform/internal/SystemZone.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace tarvo::platform {

std::optional<std::string> zoneVariable() {
    auto* text = std::getenv("TZ");
    return text ? std::optional<std::string>(text) : std::nullopt;
}

void setZoneVariable(const std::optional<std::string>& zone) {
    if (zone)
        setenv("TZ", zone->c_str(), 1);
    else
        unsetenv("TZ");
    tzset();
}

namespace {

std::optional<std::string> afterZoneInfo(const std::string& path) {
    constexpr std::string_view folder = "/zoneinfo/";
    auto at = path.rfind(folder);
    if (at == std::string::npos || at + folder.size() == path.size()) return std::nullopt;
    auto name = path.substr(at + folder.size());
    for (std::string_view variant : {"posix/", "right/"})
        if (name.starts_with(variant)) name.erase(0, variant.size());
    return name;
}

// TZ as a name, ":Europe/Berlin" and a path into the zone files included; a rule such as "CET-1CEST" is passed on as
// it is, and whoever loads zones decides.
std::optional<std::string> fromEnvironment() {
    auto zone = zoneVariable();
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

}  // namespace

std::string systemZone() {
    if (auto name = fromEnvironment()) return *name;
    if (auto name = fromLocaltimeLink()) return *name;
    // Where /etc/localtime is a copy of the zone's file instead of a link.
    if (auto name = fromTimezoneFile()) return *name;
    return "UTC";
}

}  // namespace tarvo::platform
