#include "tarvobase/utils/LogOnce.h"

#include <mutex>
#include <set>

#include "platform/Log.h"
#include "platform/ProcessState.h"

namespace tarvo {

namespace {

// Some lines hold a word of the server's. One that makes up a new word for every row would fill the memory and the log.
constexpr std::size_t mostLines = 1000;

struct LoggedLines {
    bool add(const std::string& line) {
        std::lock_guard lock(mutex);
        return lines.size() < mostLines && lines.insert(line).second;
    }
    std::mutex mutex;
    std::set<std::string> lines;
};

}  // namespace

void logOnce(const std::string& line) {
    if (platform::ProcessState::current().get<LoggedLines>().add(line))
        platform::log(platform::LogLevel::warning, "storage", line);
}

}  // namespace tarvo
