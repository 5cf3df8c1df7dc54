#include "platform/internal/SettingsJournal.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <thread>
#include <utility>

#include "platform/Files.h"
#include "platform/Json.h"
#include "platform/Log.h"

namespace tarvo::platform {

namespace {

/// The first line of each file. A program refuses files of a higher number than it knows and leaves them untouched.
constexpr std::string_view formatKey = "tarvo.settings.format";
constexpr std::int64_t formatNumber = 1;

/// The entry of a line whose maps are merged into those of the state, level by level. Null removes there too.
constexpr std::string_view mergeKey = "tarvo.settings.merge";

/// A journal is rewritten at this size, or at four times its size after the last rewriting when that is more. Lower
/// values rewrite more often, higher ones make opening slower.
constexpr off_t smallestCompaction = 64 * 1024;

std::string header() { return *settingsLine(ValueMap{{std::string(formatKey), formatNumber}}); }

void mergeInto(ValueMap& map, const ValueMap& patch) {
    for (auto& [name, value] : patch) {
        auto present = value.asMap() ? map.find(name) : nullptr;
        auto inner = present ? present->mutableMap() : nullptr;
        if (inner)
            mergeInto(*inner, *value.asMap());
        else if (value.isNull())
            map.remove(name);
        else
            map.set(name, value);
    }
}

/// Returns what must be merged into `from` for it to become `to`, or nullopt if merging cannot express that: a null
/// that is to be stored would remove.
std::optional<ValueMap> patchBetween(const ValueMap& from, const ValueMap& to) {
    ValueMap patch;
    for (auto& [name, value] : to) {
        auto former = from.find(name);
        if (former && *former == value) continue;
        if (value.isNull()) return std::nullopt;
        if (former && former->asMap() && value.asMap()) {
            auto inner = patchBetween(*former->asMap(), *value.asMap());
            if (!inner) return std::nullopt;
            patch.set(name, *std::move(inner));
        } else {
            patch.set(name, value);
        }
    }
    for (auto& [name, value] : from)
        if (!to.contains(name)) patch.set(name, Value());
    return patch;
}

bool sameFile(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

bool sameState(const struct stat& a, const struct stat& b) {
    return sameFile(a, b) && a.st_size == b.st_size && a.st_mtim.tv_sec == b.st_mtim.tv_sec &&
           a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

std::string systemWords() { return std::strerror(errno); }  // NOLINT: glibc's is safe from any thread

}  // namespace

std::optional<ValueMap> settingsChange(const ValueMap& state, const ValueMap& values) {
    ValueMap line, merged;
    for (auto& [key, value] : values) {
        if (key == formatKey || key == mergeKey) return std::nullopt;
        auto former = state.find(key);
        if (former ? *former == value : value.isNull()) continue;
        bool areMaps = former && former->asMap() && value.asMap();
        if (auto patch = areMaps ? patchBetween(*former->asMap(), *value.asMap()) : std::nullopt)
            merged.set(key, *std::move(patch));
        else
            line.set(key, value);
    }
    if (!merged.empty()) line.set(mergeKey, std::move(merged));
    return line;
}

void applySettingsLine(ValueMap& state, const ValueMap& line) {
    for (auto& [key, value] : line) {
        if (key == mergeKey)
            mergeInto(state, value.asMap() ? *value.asMap() : ValueMap());
        else if (value.isNull())
            state.remove(key);
        else
            state.set(key, value);
    }
}

std::optional<std::string> settingsLine(const ValueMap& change) {
    auto line = json::write(change);
    if (!line) return std::nullopt;
    auto again = json::parse(*line);
    if (!again || *again != Value(change)) return std::nullopt;
    return *line + '\n';
}

SettingsJournal::Lock::Lock(SettingsJournal& journal, bool forChange)
    : journal_(journal), held_(journal.openAndLock(forChange)) {}

SettingsJournal::Lock::~Lock() {
    if (journal_.file_ >= 0) ::flock(journal_.file_, LOCK_UN);
}

bool SettingsJournal::isCurrent() const {
    struct stat now {};
    if (::stat(path_.c_str(), &now) != 0) return errno == ENOENT && absenceSeen_;
    return seen_ && sameState(*seen_, now);
}

// Another process may put a new file in place of the one that is being waited for.
bool SettingsJournal::openAndLock(bool forChange) {
    for (;;) {
        if (file_ < 0 && !open(forChange)) return false;
        if (file_ < 0) return true;
        if (!lock()) return false;
        if (pathNamesOpenFile()) return true;
        close();
    }
}

// A process that is stopped or hangs may hold the lock for ever, so the wait has an end, and after a wait in vain the
// next ones are short until the lock is free again. The system offers no wait with a limit; other processes hold the
// lock for less than a millisecond, so asking again soon costs nearly nothing.
bool SettingsJournal::lock() {
    using namespace std::chrono_literals;
    auto patience = isLockOverdue_ ? std::min<std::chrono::milliseconds>(lockPatience_, 50ms) : lockPatience_;
    std::chrono::microseconds waited{0}, pause = 100us;
    while (::flock(file_, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (errno != EWOULDBLOCK) {
            logOnce("cannot be locked: " + systemWords());
            return false;
        }
        if (waited >= patience) {
            isLockOverdue_ = true;
            logOnce("is held by another process for too long");
            return false;
        }
        std::this_thread::sleep_for(pause);
        waited += pause;
        pause = std::min<std::chrono::microseconds>(2 * pause, 10ms);
    }
    isLockOverdue_ = false;
    return true;
}

// A missing file is not a failure unless one is wanted.
bool SettingsJournal::open(bool forChange) {
    if (forChange) files::createDirectories(std::filesystem::path(path_).parent_path().string());
    file_ = ::open(path_.c_str(), O_RDWR | O_APPEND | O_CLOEXEC | (forChange ? O_CREAT : 0), 0600);
    readOnly_ = file_ < 0 && (errno == EACCES || errno == EROFS);
    if (readOnly_) file_ = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    if (file_ < 0) {
        if (errno == ENOENT && !forChange) return true;
        logOnce("cannot be opened: " + systemWords());
        return false;
    }
    struct stat now {};
    if (!readOnly_ && ::fstat(file_, &now) == 0 && (now.st_mode & 0777) != 0600) ::fchmod(file_, 0600);
    return true;
}

bool SettingsJournal::pathNamesOpenFile() const {
    struct stat named {
    }, opened{};
    return ::stat(path_.c_str(), &named) == 0 && ::fstat(file_, &opened) == 0 && sameFile(named, opened);
}

void SettingsJournal::close() {
    if (file_ >= 0) ::close(file_);
    file_ = -1;
    read_ = 0;
    seen_.reset();
    absenceSeen_ = false;
    lastLineOpen_ = false;
}

void SettingsJournal::noteCurrent() {
    struct stat now {};
    if (::fstat(file_, &now) == 0) seen_ = now;
}

std::optional<std::string> SettingsJournal::readFrom(off_t offset) const {
    struct stat now {};
    if (::fstat(file_, &now) != 0) return std::nullopt;
    std::string content(static_cast<std::size_t>(std::max<off_t>(now.st_size - offset, 0)), '\0');
    std::size_t done = 0;
    while (done < content.size()) {
        auto count = ::pread(file_, content.data() + done, content.size() - done, offset + static_cast<off_t>(done));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        done += static_cast<std::size_t>(count);
    }
    content.resize(done);
    return content;
}

struct SettingsJournal::Parsed {
    std::vector<ValueMap> lines;
    bool damaged = false;
    bool newerFormat = false;
    bool lastLineOpen = false;
};

SettingsJournal::Parsed SettingsJournal::parse(std::string_view content) const {
    Parsed parsed;
    parsed.lastLineOpen = !content.empty() && content.back() != '\n';
    while (!content.empty()) {
        auto end = content.find('\n');
        auto line = content.substr(0, end);
        content.remove_prefix(end == std::string_view::npos ? content.size() : end + 1);
        if (line.find_first_not_of(" \t\r") == std::string_view::npos) continue;
        auto value = json::parse(line);
        auto change = value ? value->mutableMap() : nullptr;
        if (!change) {
            parsed.damaged = true;
            continue;
        }
        if (auto format = change->find(formatKey)) {
            parsed.newerFormat |= format->asInteger().value_or(0) > formatNumber;
            change->remove(formatKey);
        }
        parsed.lines.push_back(std::move(*change));
    }
    return parsed;
}

std::optional<SettingsJournal::Changes> SettingsJournal::readChanges() {
    if (file_ < 0) {
        close();
        absenceSeen_ = true;
        return Changes{true, {}};
    }
    struct stat now {};
    if (::fstat(file_, &now) != 0) return std::nullopt;
    if (seen_ && sameState(*seen_, now)) return Changes{};

    bool grown = seen_ && now.st_size > read_ && !lastLineOpen_;
    auto content = readFrom(grown ? read_ : 0);
    auto parsed = content ? parse(*content) : Parsed();
    // Growth that does not read may mean that somebody edited the file in its place.
    if (grown && content && parsed.damaged) {
        grown = false;
        content = readFrom(0);
        if (content) parsed = parse(*content);
    }
    if (!content) {
        logOnce("cannot be read: " + systemWords());
        return std::nullopt;
    }
    if (parsed.newerFormat) {
        logOnce("was written by a newer version of this program and is left alone");
        return std::nullopt;
    }
    if (parsed.damaged) {
        ValueMap state;
        for (auto& line : parsed.lines) applySettingsLine(state, line);
        if (readOnly_ || !setAside() || !rewrite(state)) return std::nullopt;
        if (!openAndLock(false) || file_ < 0) return std::nullopt;
        return readChanges();
    }
    read_ = (grown ? read_ : 0) + static_cast<off_t>(content->size());
    lastLineOpen_ = parsed.lastLineOpen;
    noteCurrent();
    return Changes{!grown, std::move(parsed.lines)};
}

bool SettingsJournal::writeAll(std::string_view bytes) {
    while (!bytes.empty()) {
        auto count = ::write(file_, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool SettingsJournal::append(const ValueMap& change, bool mustLast) {
    auto line = settingsLine(change);
    if (!line) {
        log(LogLevel::warning, "settings", "Settings: a value without a JSON form was not stored in " + path_);
        return false;
    }
    if (file_ < 0 || readOnly_) {
        logOnce("cannot be written");
        return false;
    }
    bool first = read_ == 0;
    auto bytes = (first ? header() : std::string(lastLineOpen_ ? "\n" : "")) + *line;
    if (!writeAll(bytes) || (mustLast && !flush())) {
        log(LogLevel::warning, "settings", "Settings: a change was not stored in " + path_ + ": " + systemWords());
        // What is left of the line would read as damage.
        if (::ftruncate(file_, read_) != 0) close();
        return false;
    }
    if (first) syncFolder();
    read_ += static_cast<off_t>(bytes.size());
    lastLineOpen_ = false;
    noteCurrent();
    return true;
}

bool SettingsJournal::flush() { return file_ < 0 || ::fdatasync(file_) == 0; }

void SettingsJournal::compactWhenLong(const ValueMap& state) {
    if (read_ < std::max(smallestCompaction, compactAt_)) return;
    auto before = read_;
    bool done = rewrite(state);
    auto size = files::size(path_);
    compactAt_ = 4 * (done && size ? static_cast<off_t>(*size) : before);
}

// The copy stands before the damaged file is replaced, so that no moment is without one of them.
bool SettingsJournal::setAside() const {
    for (int number = 1; number < 10000; ++number) {
        auto aside = path_ + ".damaged-" + std::to_string(number);
        if (files::exists(aside)) continue;
        std::error_code error;
        std::filesystem::create_hard_link(path_, aside, error);
        if (error == std::errc::file_exists) continue;
        if (error && !files::copy(path_, aside)) break;
        log(LogLevel::warning, "settings",
            "Settings: " + path_ + " is damaged; kept as " + aside + ", a fresh one holds what can be read");
        return true;
    }
    log(LogLevel::warning, "settings", "Settings: " + path_ + " is damaged and cannot be set aside; it is left alone");
    return false;
}

// Closes the file: the path names another one afterwards.
bool SettingsJournal::rewrite(const ValueMap& state) {
    auto content = header();
    for (auto& [key, value] : state)
        if (!value.isNull()) content += *settingsLine(ValueMap{{key, value}});
    if (!files::writeAtomically(path_, content, true)) return false;
    syncFolder();
    close();
    return true;
}

// Without it a power cut may bring the former file back, without what was appended to the new one.
void SettingsJournal::syncFolder() const {
    auto folder = ::open(std::filesystem::path(path_).parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return;
    ::fsync(folder);
    ::close(folder);
}

void SettingsJournal::logOnce(std::string_view what) {
    if (std::exchange(lastLogged_, what) != what)
        log(LogLevel::warning, "settings", "Settings: " + path_ + " " + std::string(what));
}

}  // namespace tarvo::platform
