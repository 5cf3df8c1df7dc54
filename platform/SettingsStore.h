#pragma once

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/FunctionRef.h"
#include "platform/ThreadSafety.h"
#include "platform/Value.h"

namespace tarvo::platform {

class SettingsJournal;

/// What a change of the settings withstands: the loss of power, or only the end of the process, which costs no wait for
/// the disk. A later change that is flushed takes those before it along.
enum class SettingsFlush { now, later };

/// A durable key-value store: one suite, one file. A change is on the disk when the operation that makes it answers
/// true, and seen by every read that begins later, in any process. A change that answers false changed nothing.
///
/// Values are null, bool, integer, real, text, lists and maps of these; null is the same as absent. Any operation may
/// be called from any thread. Changes block for the disk (about 0.2 ms on a solid-state disk); reads do not.
///
/// The file `SUITE.jsonl` has mode 0600 and one JSON map per line; each is a change: later lines win, null removes.
/// Under "tarvo.settings.merge" stand changes inside maps. docs/database.md has a command that shows the state.
class SettingsStore {
public:
    /// Opens nothing yet: the file is read at the first operation and made, with its folder, at the first change.
    /// A change waits at most `lockPatience` for another process that holds the file, and fails then; a read goes on
    /// with what it knows.
    SettingsStore(std::string folder, std::string_view suite,
                  std::chrono::milliseconds lockPatience = std::chrono::seconds(5));
    ~SettingsStore();
    SettingsStore(const SettingsStore&) = delete;
    SettingsStore& operator=(const SettingsStore&) = delete;

    /// The value of a key; nullopt if the key is absent. The typed reads also return nullopt for a value of another
    /// kind.
    std::optional<Value> value(std::string_view key) const;
    std::optional<std::string> string(std::string_view key) const;
    std::optional<std::int64_t> integer(std::string_view key) const;
    std::optional<bool> boolean(std::string_view key) const;
    std::optional<ValueList> list(std::string_view key) const;
    std::optional<ValueMap> map(std::string_view key) const;
    std::vector<std::string> keys() const;

    /// Stores a value; null removes the key. False, and logged, when the value has no form in JSON (bytes, an object,
    /// a real that is not finite, a text that is not UTF-8) or the disk refuses.
    bool set(std::string_view key, Value value);
    /// True also when the key was not there.
    bool remove(std::string_view key);
    /// Several keys as one change: after a crash all of them hold or none.
    bool change(const ValueMap& values);
    /// Removes every key that the function chooses, as one change.
    bool removeKeys(FunctionRef<bool(std::string_view key)> chosen);

    /// Reads, changes and writes under one lock, against other processes too. `next` gets the present value, null
    /// for an absent key, and gives the new one; it must not change the store. The answer is the new value once it is
    /// on the disk (null after a removal), nullopt if it could not be stored. With `SettingsFlush::later` it is only
    /// written by then.
    std::optional<Value> update(std::string_view key, FunctionRef<Value(const Value& present)> next,
                                SettingsFlush flush = SettingsFlush::now);

    /// Reads what other processes have written and flushes the file. Needed by nobody: reads look for changes
    /// themselves and every change is flushed. False when the file cannot be read or flushed.
    bool synchronise();

    const std::string& path() const { return path_; }

private:
    template <class F>
    auto read(F&& reader) const;
    template <class F>
    bool write(F&& makeChange, SettingsFlush flush = SettingsFlush::now);
    bool takeOver() const TARVO_REQUIRES(fileMutex_);
    bool look() const;
    /// The state for a change: `fileMutex_` alone keeps it from changing, which the check cannot express.
    const ValueMap& stateToChange() const TARVO_REQUIRES(fileMutex_) TARVO_NO_THREAD_SAFETY_ANALYSIS { return state_; }

    std::string path_;
    // Order of locks: `fileMutex_`, the file's own lock between processes, `stateMutex_`.
    mutable Mutex fileMutex_;
    std::unique_ptr<SettingsJournal> journal_ TARVO_PT_GUARDED_BY(fileMutex_);
    mutable Mutex stateMutex_;
    // Changed only with `fileMutex_` held as well.
    mutable ValueMap state_ TARVO_GUARDED_BY(stateMutex_);
    /// A change of this process holds the file's lock, so no other process can have changed it: readers need not look.
    std::atomic<bool> ownsFile_ = false;
    std::atomic<std::thread::id> updating_{};
};

/// The suites of a folder, each opened once.
class SettingsStores {
public:
    static constexpr std::string_view standardSuite = "standard";

    /// Where suites are opened from now on; those that are open stay where they are. At first it is
    /// "TarvoBase/settings" below the user's configuration folder (XDG).
    void setFolder(std::string folder);
    std::string folder() const;
    /// The store of a suite; the same object for the same folder and name. An empty name is the standard suite.
    /// `unlessSet` is the folder to use in place of the first one, unless `setFolder` was called or it is empty.
    std::shared_ptr<SettingsStore> suite(std::string_view name = standardSuite, std::string_view unlessSet = {});

private:
    mutable Mutex mutex_;
    std::optional<std::string> folder_ TARVO_GUARDED_BY(mutex_);                           // once it is set
    std::map<std::string, std::shared_ptr<SettingsStore>> open_ TARVO_GUARDED_BY(mutex_);  // by path
};

}  // namespace tarvo::platform

namespace tarvo {
using platform::SettingsFlush;
using platform::SettingsStore;
using platform::SettingsStores;
}  // namespace tarvo
