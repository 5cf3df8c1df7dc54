#include "tarvobase/utils/LogOnce.h"

#include <mutex>
#include <unordered_set>

#include "platform/Log.h"
#include "platform/ProcessState.h"

namespace tarvo {

namespace {

// The lines hold names that a server gives. Beyond this many different ones the log says nothing new, and a server that
// makes up a name for every row would fill the memory.
constexpr std::size_t mostLines = 1000;

struct LoggedLines {
    bool isNew(const std::string& line) {
        std::lock_guard lock(mutex);
        return lines.size() < mostLines && lines.insert(line).second;
    }
    std::mutex mutex;
    std::unordered_set<std::string> lines;
};

}  // namespace

void logOnce(const std::string& line) {
    if (platform::ProcessState::current().get<LoggedLines>().isNew(line)) platform::log(line);
}

}  // namespace tarvo
