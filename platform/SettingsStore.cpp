#include "platform/SettingsStore.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/DispatchQueue.h"
#include "platform/Log.h"
#include "platform/ProgrammingError.h"
#include "platform/Text.h"
#include "platform/internal/SettingsJournal.h"

namespace tarvo::platform {

namespace {

std::string filePath(const std::string& folder, std::string_view suite) {
    // Escaped, a name with separators stays one file of the folder.
    return folder + "/" + text::percentEscape(suite) + ".jsonl";
}

std::string homeFolder() {
    if (auto home = std::getenv("HOME"); home && *home) return home;
    auto user = ::getpwuid(::getuid());
    return user && user->pw_dir ? user->pw_dir : "/";
}

std::string defaultFolder() {
    auto configuration = std::getenv("XDG_CONFIG_HOME");
    auto base = configuration && *configuration == '/' ? std::string(configuration) : homeFolder() + "/.config";
    return base + "/TarvoBase/settings";
}

// Sets an atomic for the length of a scope.
template <class T>
class Marked {
public:
    Marked(std::atomic<T>& flag, T value) : flag_(flag) { flag_ = value; }
    ~Marked() { clear(); }
    Marked(const Marked&) = delete;
    Marked& operator=(const Marked&) = delete;
    void clear() { flag_ = T(); }

private:
    std::atomic<T>& flag_;
};

}  // namespace

SettingsStore::SettingsStore(std::string folder, std::string_view suite, std::chrono::milliseconds lockPatience)
    : path_(filePath(folder, suite)), journal_(std::make_unique<SettingsJournal>(path_, lockPatience)) {}

SettingsStore::~SettingsStore() = default;

// With the file's lock held.
bool SettingsStore::takeOver() const {
    auto changes = journal_->readChanges();
    if (!changes) return false;
    MutexLock lock(stateMutex_);
    if (changes->fromStart) state_.clear();
    for (auto& line : changes->lines) applySettingsLine(state_, line);
    return true;
}

bool SettingsStore::look() const {
    MutexLock lock(fileMutex_);
    if (journal_->isCurrent()) return true;
    SettingsJournal::Lock file(*journal_, false);
    return file && takeOver();
}

template <class F>
auto SettingsStore::read(F&& reader) const {
    if (!ownsFile_) look();
    MutexLock lock(stateMutex_);
    return reader(std::as_const(state_));
}

template <class F>
bool SettingsStore::write(F&& makeChange, SettingsFlush flush) {
    if (updating_ == std::this_thread::get_id()) {
        reportProgrammingError("Settings: changed from inside an update of the same suite");
        return false;
    }
    // Only the wait for the disk is long enough for another thread to stand in.
    std::optional<BlockingScope> blocking;
    if (flush == SettingsFlush::now) blocking.emplace();
    MutexLock lock(fileMutex_);
    SettingsJournal::Lock file(*journal_, true);
    if (!file || !takeOver()) return false;
    Marked owned(ownsFile_, true);
    auto& state = stateToChange();
    auto change = settingsChange(state, makeChange(state));
    if (!change) {
        log(LogLevel::warning, "settings", "Settings: a key of the file's own was not stored in " + path_);
        return false;
    }
    if (change->empty()) return true;
    if (!journal_->append(*change, flush == SettingsFlush::now)) return false;
    {
        MutexLock stateLock(stateMutex_);
        applySettingsLine(state_, *change);
    }
    owned.clear();
    journal_->compactWhenLong(state);
    return true;
}

std::optional<Value> SettingsStore::value(std::string_view key) const {
    return read([&](const ValueMap& state) {
        auto found = state.find(key);
        return found ? std::optional(*found) : std::nullopt;
    });
}

std::optional<std::string> SettingsStore::string(std::string_view key) const {
    auto found = value(key);
    auto text = found ? found->asText() : nullptr;
    return text ? std::optional(*text) : std::nullopt;
}

std::optional<std::int64_t> SettingsStore::integer(std::string_view key) const {
    auto found = value(key);
    return found ? found->asInteger() : std::nullopt;
}

std::optional<bool> SettingsStore::boolean(std::string_view key) const {
    auto found = value(key);
    return found ? found->asBool() : std::nullopt;
}

std::optional<ValueList> SettingsStore::list(std::string_view key) const {
    auto found = value(key);
    auto list = found ? found->asList() : nullptr;
    return list ? std::optional(*list) : std::nullopt;
}

std::optional<ValueMap> SettingsStore::map(std::string_view key) const {
    auto found = value(key);
    auto map = found ? found->asMap() : nullptr;
    return map ? std::optional(*map) : std::nullopt;
}

std::vector<std::string> SettingsStore::keys() const {
    return read([](const ValueMap& state) {
        std::vector<std::string> names;
        names.reserve(state.size());
        for (auto& entry : state) names.push_back(entry.name);
        return names;
    });
}

bool SettingsStore::set(std::string_view key, Value value) {
    return change(ValueMap{{std::string(key), std::move(value)}});
}

bool SettingsStore::remove(std::string_view key) { return set(key, Value()); }

bool SettingsStore::change(const ValueMap& values) {
    return write([&](const ValueMap&) -> const ValueMap& { return values; });
}

bool SettingsStore::removeKeys(FunctionRef<bool(std::string_view)> chosen) {
    return write([&](const ValueMap& state) {
        ValueMap change;
        for (auto& entry : state)
            if (chosen(entry.name)) change.set(entry.name, Value());
        return change;
    });
}

std::optional<Value> SettingsStore::update(std::string_view key, FunctionRef<Value(const Value&)> next,
                                           SettingsFlush flush) {
    std::optional<Value> stored;
    auto makeChange = [&](const ValueMap& state) {
        Marked updating(updating_, std::this_thread::get_id());
        stored = next(state.valueOf(key));
        return ValueMap{{std::string(key), *stored}};
    };
    bool done = write(makeChange, flush);
    return done ? stored : std::nullopt;
}

bool SettingsStore::synchronise() {
    if (updating_ == std::this_thread::get_id()) return true;
    if (!look()) return false;
    MutexLock lock(fileMutex_);
    return journal_->flush();
}

void SettingsStores::setFolder(std::string folder) {
    MutexLock lock(mutex_);
    folder_ = std::move(folder);
}

std::string SettingsStores::folder() const {
    MutexLock lock(mutex_);
    return folder_.value_or(defaultFolder());
}

std::shared_ptr<SettingsStore> SettingsStores::suite(std::string_view name, std::string_view unlessSet) {
    if (name.empty()) name = standardSuite;
    MutexLock lock(mutex_);
    auto folder = folder_.value_or(unlessSet.empty() ? defaultFolder() : std::string(unlessSet));
    auto& store = open_[filePath(folder, name)];
    if (!store) store = std::make_shared<SettingsStore>(folder, name);
    return store;
}

}  // namespace tarvo::platform
