#include "platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "platform/Log.h"
#include "platform/Random.h"
#include "platform/Text.h"

namespace fs = std::filesystem;

namespace tarvo::platform::files {

namespace {

// The log names the last component of the path only: the folders above it name the user and the organisation.
void logFailure(std::string_view what, const std::string& path, std::error_code error) {
    log(LogLevel::warning, "files",
        "Cannot " + std::string(what) + " " + fs::path(path).filename().string() + ": " + error.message());
}

bool logLastError(std::string_view what, const std::string& path) {
    logFailure(what, path, std::error_code(errno, std::generic_category()));
    return false;
}

bool succeeded(std::string_view what, const std::string& path, std::error_code error) {
    if (error) logFailure(what, path, error);
    return !error;
}

// An open file that closes itself.
class Descriptor {
public:
    Descriptor(const std::string& path, int flags, mode_t mode = 0)
        : number_(::open(path.c_str(), flags | O_CLOEXEC, mode)) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return number_ >= 0; }
    bool close() { return number_ < 0 || ::close(std::exchange(number_, -1)) == 0; }
    bool flush() { return ::fsync(number_) == 0; }

    bool write(std::string_view content) {
        while (!content.empty()) {
            auto written = ::write(number_, content.data(), content.size());
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) return false;
            content.remove_prefix(static_cast<std::size_t>(written));
        }
        return true;
    }

    bool read(std::string& content) {
        struct stat status {};
        if (::fstat(number_, &status) != 0) return false;
        if (S_ISDIR(status.st_mode)) {
            errno = EISDIR;
            return false;
        }
        // The size is a first guess: a file may grow meanwhile, and one of the system's own reports no size.
        content.resize(static_cast<std::size_t>(status.st_size) + 1);
        std::size_t filled = 0;
        for (;;) {
            if (filled == content.size()) content.resize(content.size() * 2);
            auto got = ::read(number_, content.data() + filled, content.size() - filled);
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) return false;
            if (got == 0) break;
            filled += static_cast<std::size_t>(got);
        }
        content.resize(filled);
        return true;
    }

private:
    int number_;
};

std::string folderOf(const std::string& path) {
    auto folder = fs::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

// Makes the names in a folder survive a power cut.
bool flushFolder(const std::string& folder) {
    Descriptor descriptor(folder, O_RDONLY | O_DIRECTORY);
    return descriptor.isOpen() && descriptor.flush();
}

bool writeAndFlush(const std::string& path, std::string_view content, mode_t mode) {
    Descriptor file(path, O_WRONLY | O_CREAT | O_EXCL, mode);
    return file.isOpen() && file.write(content) && file.flush() && file.close();
}

constexpr std::string_view temporarySuffix = ".tmp";
constexpr std::size_t randomPart = 8;

// A process that died between the writing and the renaming left its temporary file behind. One that is writing now has
// a new one, which stays.
void removeLeftovers(const std::string& path) {
    constexpr auto longestWrite = std::chrono::minutes(10);
    std::error_code error;
    auto now = fs::last_write_time(path, error);
    auto prefix = fs::path(path).filename().string() + ".";
    for (fs::directory_iterator file(folderOf(path), error), end; !error && file != end; file.increment(error)) {
        auto name = file->path().filename().string();
        bool isTemporary = name.starts_with(prefix) && name.ends_with(temporarySuffix) &&
                           name.size() == prefix.size() + randomPart + temporarySuffix.size();
        std::error_code unknown;
        if (!isTemporary || now - file->last_write_time(unknown) < longestWrite || unknown) continue;
        fs::remove(file->path(), unknown);
    }
}

// A file that is replaced keeps its mode.
mode_t modeFor(const std::string& path, bool ownerOnly) {
    if (ownerOnly) return 0600;
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0666;
}

/// Lets `write` make a file beside `path`, and puts that in its place.
template <class Write>
bool replaceAtomically(const std::string& path, const Write& write) {
    auto temporary = path + "." + Random::uuid().substr(0, randomPart) + std::string(temporarySuffix);
    if (!write(temporary) || ::rename(temporary.c_str(), path.c_str()) != 0) {
        logLastError("write", path);
        ::unlink(temporary.c_str());
        return false;
    }
    removeLeftovers(path);
    return flushFolder(folderOf(path)) || logLastError("flush the folder of", path);
}

}  // namespace

std::optional<Data> read(const std::string& path) {
    Descriptor file(path, O_RDONLY);
    std::string content;
    if (!file.isOpen() || !file.read(content)) {
        logLastError("read", path);
        return std::nullopt;
    }
    return Data(std::move(content));
}

bool writeAtomically(const std::string& path, std::string_view content, bool ownerOnly) {
    return replaceAtomically(path, [&](const std::string& temporary) {
        return writeAndFlush(temporary, content, modeFor(path, ownerOnly));
    });
}

bool copyAtomically(const std::string& from, const std::string& to) {
    return replaceAtomically(to, [&](const std::string& temporary) {
        std::error_code error;
        if (!fs::copy_file(from, temporary, error)) {
            errno = error.value();
            return false;
        }
        Descriptor copied(temporary, O_RDONLY);  // it has the mode of the original
        return copied.isOpen() && copied.flush() && copied.close();
    });
}

bool exists(const std::string& path) {
    std::error_code error;
    return fs::exists(path, error);
}

std::optional<std::uint64_t> size(const std::string& path) {
    std::error_code error;
    auto size = fs::file_size(path, error);
    return error ? std::nullopt : std::optional<std::uint64_t>(size);
}

bool createDirectories(const std::string& path) {
    std::string made;
    for (auto& piece : fs::path(path)) {
        made = (fs::path(made) / piece).string();
        if (::mkdir(made.c_str(), 0700) == 0 || errno == EEXIST) continue;
        // An existing folder above may refuse for another reason, such as a read-only file system.
        std::error_code error;
        auto reason = errno;
        if (fs::is_directory(made, error)) continue;
        errno = reason;
        return logLastError("create", path);
    }
    std::error_code error;
    if (fs::is_directory(path, error)) return true;
    return succeeded("create", path, error ? error : std::make_error_code(std::errc::not_a_directory));
}

bool remove(const std::string& path) {
    std::error_code error;
    fs::remove_all(path, error);
    return succeeded("remove", path, error);
}

bool move(const std::string& from, const std::string& to) {
    std::error_code error;
    fs::rename(from, to, error);
    if (error != std::errc::cross_device_link) return succeeded("move", from, error);
    return copy(from, to) && remove(from);
}

bool copy(const std::string& from, const std::string& to) {
    std::error_code error;
    fs::copy(from, to, fs::copy_options::overwrite_existing | fs::copy_options::recursive, error);
    return succeeded("copy", from, error);
}

std::string makeTemporaryDirectory(std::string_view prefix) {
    std::error_code error;
    auto base = fs::temp_directory_path(error);
    auto path = (error ? fs::path("/tmp") : base) / (std::string(prefix) + Random::uuid());
    createDirectories(path.string());
    return path.string();
}

std::optional<std::string> pathComponent(std::string_view text) {
    constexpr std::size_t longest = 200;
    if (text.empty() || text.size() > longest || text == "." || text == "..") return std::nullopt;
    if (!text::isValidUtf8(text)) return std::nullopt;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto c = static_cast<unsigned char>(text[i]);
        if (c < 0x20 || c == 0x7F || c == '/' || c == '\\') return std::nullopt;
        // The second block of control characters, U+0080 to U+009F.
        if (c == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0) return std::nullopt;
    }
    return std::string(text);
}

}  // namespace tarvo::platform::files
