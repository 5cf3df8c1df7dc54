#include "platform/ProgrammingError.h"

#include <cstdlib>
#include <memory>
#include <string>

#include "platform/Log.h"
#include "platform/ThreadSafety.h"

namespace tarvo::platform {

namespace {

struct Handler {
    Mutex mutex;
    std::shared_ptr<const ProgrammingErrorHandler> handler TARVO_GUARDED_BY(mutex);

    static Handler& shared() {
        static auto* handler = new Handler;
        return *handler;
    }
};

void logAndStop(std::string_view what) {
    log(LogLevel::error, "programming", "Programming error: " + std::string(what));
#ifndef NDEBUG
    std::abort();
#endif
}

}  // namespace

ProgrammingErrorHandler setProgrammingErrorHandler(ProgrammingErrorHandler handler) {
    auto& shared = Handler::shared();
    auto next = handler ? std::make_shared<const ProgrammingErrorHandler>(std::move(handler)) : nullptr;
    {
        MutexLock lock(shared.mutex);
        next.swap(shared.handler);
    }
    return next ? *next : ProgrammingErrorHandler();
}

void reportProgrammingError(std::string_view what) {
    auto& shared = Handler::shared();
    std::shared_ptr<const ProgrammingErrorHandler> handler;
    {
        MutexLock lock(shared.mutex);
        handler = shared.handler;
    }
    if (handler)
        (*handler)(what);
    else
        logAndStop(what);
}

}  // namespace tarvo::platform
