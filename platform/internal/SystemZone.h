#pragma once

#include <optional>
#include <string>

namespace tarvo::platform {

/// The name of the system's time zone: from TZ, the link /etc/localtime or the file /etc/timezone, in this order; "UTC"
/// if none of them names one.
std::string systemZone();

/// The value of the environment variable TZ; nullopt if it is not set.
std::optional<std::string> zoneVariable();

/// Sets or removes TZ. SQLite takes local times from the C library, which has no other way to set the zone. Changing
/// the environment disturbs threads that read it at the same moment, which is why only tests and scripts set a zone.
void setZoneVariable(const std::optional<std::string>& zone);

}  // namespace tarvo::platform
