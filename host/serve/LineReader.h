#pragma once

#include <functional>
#include <string>
#include <thread>

namespace tarvo::host {

/// Reads lines from a file descriptor on a thread of its own.
class LineReader {
public:
    using OnLine = std::function<void(std::string line)>;
    using OnEnd = std::function<void()>;

    /// Both callbacks are called on the reader's thread; `onEnd` once, unless the reader is destroyed before.
    LineReader(int descriptor, OnLine onLine, OnEnd onEnd);
    /// Ends reading at once, also while it waits for input.
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// The longest line in bytes. The rest of a longer line is dropped, so that it is refused as a call.
    static constexpr std::size_t longestLine = 64 * 1024 * 1024;

private:
    void read();
    bool waitForInput() const;
    void take(const char* bytes, std::size_t count);

    const int descriptor_;
    const OnLine onLine_;
    const OnEnd onEnd_;
    std::string line_;
    int wake_[2] = {-1, -1};  // a pipe; closing its second end ends the thread
    std::thread thread_;
};

}  // namespace tarvo::host
