#include "tarvobase/utils/LogOnce.h"

#include <set>

#include "platform/Log.h"
#include "platform/ProcessState.h"
#include "platform/ThreadSafety.h"

namespace tarvo {

namespace {

// Some lines contain a word that the server sent. A server that sends a new word per row would fill the memory and the
// log.
constexpr std::size_t mostLines = 1000;

struct LoggedLines {
    bool add(const std::string& line) {
        platform::MutexLock lock(mutex);
        return lines.size() < mostLines && lines.insert(line).second;
    }
    platform::Mutex mutex;
    std::set<std::string> lines TARVO_GUARDED_BY(mutex);
};

}  // namespace

void logOnce(const std::string& line) {
    if (platform::ProcessState::current().get<LoggedLines>().add(line))
        platform::log(platform::LogLevel::warning, "storage", line);
}

}  // namespace tarvo
