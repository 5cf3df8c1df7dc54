#pragma once

namespace kelva {

/// Name of the file layer that every connection is opened with: the system's own, except that "now" in SQL is the
/// time of `platform::Clock`. Registered at the first call; any thread.
const char* clockVfsName();

}  // namespace kelva
