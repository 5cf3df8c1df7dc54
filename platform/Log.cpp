#include "platform/Log.h"

#include <atomic>
#include <cstdio>
#include <memory>
#include <utility>

#include "platform/ThreadSafety.h"

namespace tarvo::platform {

namespace {

void writeToStandardError(std::string_view line) {
    std::string whole(line);
    whole += '\n';
    std::fwrite(whole.data(), 1, whole.size(), stderr);
}

// Never destroyed: threads of the pool may log while the process ends.
struct Sink {
    Mutex calling;  // one call at a time
    Mutex mutex;    // guards `sink`
    std::shared_ptr<const LogSink> sink TARVO_GUARDED_BY(mutex);

    static Sink& shared() {
        static auto* sink = new Sink;
        return *sink;
    }
};

thread_local bool insideSink = false;

std::atomic<LogLevel> leastLevel = LogLevel::progress;

void callSink(Sink& shared, const LogSink& sink, const LogLine& line) {
    MutexLock lock(shared.calling);
    struct Inside {
        Inside() { insideSink = true; }
        ~Inside() { insideSink = false; }
    } inside;
    try {
        sink(line);
    } catch (...) {
        writeToStandardError("A log sink threw an exception");
    }
}

}  // namespace

void log(LogLevel level, std::string_view subject, std::string_view text) {
    if (level < leastLevel) return;
    auto& shared = Sink::shared();
    std::shared_ptr<const LogSink> sink;
    {
        MutexLock lock(shared.mutex);
        sink = shared.sink;
    }
    // A sink that logs would call itself for ever; its own lines go the default way.
    if (!sink || insideSink)
        writeToStandardError(text);
    else
        callSink(shared, *sink, {level, subject, text});
}

LogLevel setLogLevel(LogLevel least) { return leastLevel.exchange(least); }

LogSink setLogSink(LogSink sink) {
    auto& shared = Sink::shared();
    auto next = sink ? std::make_shared<const LogSink>(std::move(sink)) : nullptr;
    {
        MutexLock lock(shared.mutex);
        next.swap(shared.sink);
    }
    return next ? *next : LogSink();
}

}  // namespace tarvo::platform
