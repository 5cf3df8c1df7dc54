#pragma once

#include <sys/stat.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Value.h"

namespace tarvo::platform {

/// The file beneath a `SettingsStore`: a journal of JSON maps, one per line, that is rewritten when it has grown far
/// beyond the state that it describes. One append and one flush per change cost a third of writing a small file anew
/// (150 against 460 microseconds at 200 keys, and the gap grows with the file), and readers of other processes need
/// to read only what was added.
///
/// The file may change hands at any time, so every use begins with `Lock` and `readChanges`. Not safe for several
/// threads; the store sees to that.
class SettingsJournal {
public:
    SettingsJournal(std::string path, std::chrono::milliseconds lockPatience)
        : path_(std::move(path)), lockPatience_(lockPatience) {}
    ~SettingsJournal() { close(); }
    SettingsJournal(const SettingsJournal&) = delete;
    SettingsJournal& operator=(const SettingsJournal&) = delete;

    /// Holds the file against other processes, and against other stores on the same file.
    class Lock {
    public:
        /// `forChange` makes the file and its folder when they are absent.
        Lock(SettingsJournal& journal, bool forChange);
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;
        /// False when there is a file that cannot be opened or locked in time, or none could be made.
        explicit operator bool() const { return held_; }

    private:
        SettingsJournal& journal_;
        bool held_;
    };

    /// Whether the file is what was read last, so that the lock can be spared.
    bool isCurrent() const;

    struct Changes {
        bool fromStart = false;  // they replace the state instead of adding to it
        std::vector<ValueMap> lines;
    };
    /// What was added to the file since the last read. The caller holds the lock. Damage is repaired on the way: the
    /// damaged file stays beside the new one under the name "PATH.damaged-N", and what reads of it is carried over.
    /// Nothing when the file cannot be read, or its damage not be set aside, or a newer program wrote it.
    std::optional<Changes> readChanges();

    /// Adds a change; true once it is on the disk, or written if `mustLast` is not set. With the lock held, after
    /// `readChanges`.
    bool append(const ValueMap& change, bool mustLast);
    /// Rewrites a journal that has grown too long as just the state. The lock protects nothing afterwards.
    void compactWhenLong(const ValueMap& state);
    bool flush();

private:
    struct Parsed;
    Parsed parse(std::string_view content) const;
    bool openAndLock(bool forChange);
    bool open(bool forChange);
    bool lock();
    bool pathNamesOpenFile() const;
    void close();
    void noteCurrent();
    std::optional<std::string> readFrom(off_t offset) const;
    bool writeAll(std::string_view bytes);
    bool setAside() const;
    bool rewrite(const ValueMap& state);
    void syncFolder() const;
    void logOnce(std::string_view what);

    std::string path_;
    const std::chrono::milliseconds lockPatience_;
    bool isLockOverdue_ = false;  // the last wait for the lock was in vain
    int file_ = -1;
    bool readOnly_ = false;
    off_t read_ = 0;                   // bytes of the open file that have been read
    std::optional<struct stat> seen_;  // the file when it was read last; nullopt: it was absent or never read
    bool absenceSeen_ = false;
    bool lastLineOpen_ = false;  // the last line reads but lacks its line feed
    off_t compactAt_ = 0;
    std::string lastLogged_;
};

/// Returns the line that makes `values` of the state's values of these keys, or nullopt if a key is one of the
/// journal's own. The line is empty if they are equal already. It names only the entries of a map that differ: the maps
/// of modules grow long, and most changes concern one module.
std::optional<ValueMap> settingsChange(const ValueMap& state, const ValueMap& values);
/// Changes a state as a line of the journal says.
void applySettingsLine(ValueMap& state, const ValueMap& line);
/// The text of a line, checked to read back equal; nullopt if it would not.
std::optional<std::string> settingsLine(const ValueMap& change);

}  // namespace tarvo::platform
