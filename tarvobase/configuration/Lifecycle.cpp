#include "tarvobase/configuration/Lifecycle.h"

#include "bren_network/BrenNetworkManager.h"
#include "platform/DispatchQueue.h"
#include "platform/Log.h"

namespace tarvo {

namespace {
// The time that `shutdown` waits for work under way. Work that takes longer goes on.
constexpr std::chrono::seconds patience{10};
}  // namespace

void shutdown() {
    platform::WorkerPool::cancelAllTimers();
    bren::BrenNetworkManager::sharedInstance().shutDown();
    if (!platform::WorkerPool::waitUntilIdle(patience))
        platform::log(platform::LogLevel::warning, "configuration", "shutdown: work is still running");
}

}  // namespace tarvo
