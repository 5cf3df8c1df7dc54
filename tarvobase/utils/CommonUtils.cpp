#include "tarvobase/utils/CommonUtils.h"

#include <vector>

#include "platform/ProcessState.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/configuration/AppPlatformConstants.h"
#include "tarvobase/configuration/UserAccounts.h"

namespace tarvo {

namespace {

std::shared_ptr<DispatchQueue> makeQueue() { return DispatchQueue::serial("BrenCommonUtilsQueue"); }

struct Background {
    platform::Mutex mutex;
    std::shared_ptr<AppPlatformConstantsProtocol> constants TARVO_GUARDED_BY(mutex) =
        std::make_shared<OSXPlatformConstants>();
    std::vector<std::shared_ptr<DispatchQueue>> pool TARVO_GUARDED_BY(mutex);
    std::size_t next TARVO_GUARDED_BY(mutex) = 0;
};

Background& background() { return platform::ProcessState::current().get<Background>(); }

}  // namespace

void CommonUtils::performRequestInQueue(const std::shared_ptr<DispatchQueue>& queue, Sync sync, Work work) {
    if (sync == Sync::yes)
        queue->sync(work);
    else
        queue->async(std::move(work));
}

std::shared_ptr<DispatchQueue> CommonUtils::nextBackgroundDispatchQueue() {
    auto& state = background();
    auto size = platformConstants()->maximumNumberOfThreads().value_or(0);
    if (size <= 0) return makeQueue();
    platform::MutexLock lock(state.mutex);
    while (state.pool.size() < static_cast<std::size_t>(size)) state.pool.push_back(makeQueue());
    return state.pool[state.next++ % state.pool.size()];
}

std::shared_ptr<AppPlatformConstantsProtocol> CommonUtils::platformConstants() {
    auto& state = background();
    platform::MutexLock lock(state.mutex);
    return state.constants;
}

void CommonUtils::setPlatformConstants(std::shared_ptr<AppPlatformConstantsProtocol> constants) {
    auto& state = background();
    platform::MutexLock lock(state.mutex);
    state.constants = std::move(constants);
}

std::string CommonUtils::getCurrentUserBrenUID() { return UserAccountsManager::userAccounts().getCurrentBrenUID(); }
bool CommonUtils::hasBrenuid() { return UserAccountsManager::userAccounts().hasBrenuid(); }

}  // namespace tarvo
