#include "platform/ProgrammingError.h"

#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>

#include "platform/Log.h"

namespace tarvo::platform {

namespace {

struct Handler {
    std::mutex mutex;
    std::shared_ptr<const ProgrammingErrorHandler> handler;

    static Handler& shared() {
        static auto* handler = new Handler;
        return *handler;
    }
};

void logAndStop(std::string_view what) {
    log("Programming error: " + std::string(what));
#ifndef NDEBUG
    std::abort();
#endif
}

}  // namespace

ProgrammingErrorHandler setProgrammingErrorHandler(ProgrammingErrorHandler handler) {
    auto& shared = Handler::shared();
    auto next = handler ? std::make_shared<const ProgrammingErrorHandler>(std::move(handler)) : nullptr;
    {
        std::lock_guard lock(shared.mutex);
        next.swap(shared.handler);
    }
    return next ? *next : ProgrammingErrorHandler();
}

void reportProgrammingError(std::string_view what) {
    auto& shared = Handler::shared();
    std::shared_ptr<const ProgrammingErrorHandler> handler;
    {
        std::lock_guard lock(shared.mutex);
        handler = shared.handler;
    }
    if (handler)
        (*handler)(what);
    else
        logAndStop(what);
}

}  // namespace tarvo::platform
