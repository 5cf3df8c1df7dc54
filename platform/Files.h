#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Data.h"

/// Files without exceptions. Paths are UTF-8 texts. A failure is false or nullopt and is logged with the system's
/// words, the file's content never.
namespace tarvo::platform::files {

std::optional<Data> read(const std::string& path);
/// Writes the whole content so that a crash leaves the old file or the new one: a temporary file beside it, flushed to
/// the disk, then renamed over it. `ownerOnly` gives the file mode 0600.
bool writeAtomically(const std::string& path, std::string_view content, bool ownerOnly = false);
bool exists(const std::string& path);
std::optional<std::uint64_t> size(const std::string& path);
/// Creates a folder with all folders above it. True also when it is there already. New folders get mode 0700.
bool createDirectories(const std::string& path);
/// True also when there is nothing to remove. A folder goes with all that is in it.
bool remove(const std::string& path);
bool move(const std::string& from, const std::string& to);
bool copy(const std::string& from, const std::string& to);
/// Copies one file so that the copy is whole and on the disk, or `to` stays as it was.
bool copyAtomically(const std::string& from, const std::string& to);
/// An empty folder of its own below the system's temporary folder.
std::string makeTemporaryDirectory(std::string_view prefix);

/// A text that came from outside as one component of a path: the text itself when it is harmless, else nullopt.
/// Refused are the empty text, "." and "..", separators of any system, control characters, malformed UTF-8, and more
/// than 200 bytes.
std::optional<std::string> pathComponent(std::string_view text);

}  // namespace tarvo::platform::files

namespace tarvo {
namespace files = platform::files;
}
