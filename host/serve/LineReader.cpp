#include "host/serve/LineReader.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <array>
#include <cerrno>
#include <utility>

namespace tarvo::host {

LineReader::LineReader(int descriptor, OnLine onLine, OnEnd onEnd)
    : descriptor_(descriptor), onLine_(std::move(onLine)), onEnd_(std::move(onEnd)) {
    if (::pipe2(wake_, O_CLOEXEC) != 0) wake_[0] = wake_[1] = -1;
    thread_ = std::thread([this] { read(); });
}

LineReader::~LineReader() {
    if (wake_[1] >= 0) ::close(wake_[1]);
    thread_.join();
    if (wake_[0] >= 0) ::close(wake_[0]);
}

bool LineReader::waitForInput() const {
    pollfd waiting[2] = {{descriptor_, POLLIN, 0}, {wake_[0], POLLIN, 0}};
    while (::poll(waiting, 2, -1) < 0)
        if (errno != EINTR) return false;
    return waiting[1].revents == 0;
}

void LineReader::read() {
    std::array<char, 64 * 1024> buffer;
    while (waitForInput()) {
        auto count = ::read(descriptor_, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count > 0) {
            take(buffer.data(), static_cast<std::size_t>(count));
            continue;
        }
        if (!line_.empty()) onLine_(std::move(line_));
        return onEnd_();
    }
}

void LineReader::take(const char* bytes, std::size_t count) {
    for (auto end = bytes + count; bytes != end; ++bytes) {
        if (*bytes == '\n') {
            onLine_(std::exchange(line_, {}));
        } else if (line_.size() < longestLine) {
            line_ += *bytes;
        }
    }
}

}  // namespace tarvo::host
