#include "bren_network/BrenNetworkManager.h"

#include <curl/curl.h>

#include <system_error>

#include "bren_network/internal/Authorities.h"
#include "bren_network/internal/PreparedRequest.h"
#include "bren_network/internal/TransferLoop.h"
#include "bren_network/internal/Tuning.h"
#include "platform/Log.h"
#include "platform/ProgrammingError.h"
#include "platform/ThreadSafety.h"

namespace bren {

using Kind = NetworkError::Kind;

struct BrenNetworkManager::State {
    const std::shared_ptr<tarvo::DispatchQueue> queue = tarvo::DispatchQueue::serial("com.bren.network.completion");
    const std::shared_ptr<BufferBudget> budget = std::make_shared<BufferBudget>();
    Authorities authorities;
    std::atomic<int> taskNumbers = 0;

    tarvo::platform::Mutex mutex;
    std::string userAgent TARVO_GUARDED_BY(mutex) = "TarvoBase";
    std::shared_ptr<TransferLoop> loop TARVO_GUARDED_BY(mutex);  // made with the first request
    std::size_t maximumBody TARVO_GUARDED_BY(mutex) = tuning::maximumBody;
    bool isShutDown TARVO_GUARDED_BY(mutex) = false;

    void run(Task task, std::vector<BrenFileUploadInfo> files, bool isUpload);
    std::optional<NetworkError> submit(PreparedRequest request, BrenTaskPriority priority,
                                       const std::shared_ptr<Delivery>& delivery);
    std::shared_ptr<TransferLoop> takeLoop();
};

void BrenNetworkManager::State::run(Task task, std::vector<BrenFileUploadInfo> files, bool isUpload) {
    auto delivery = std::make_shared<Delivery>(queue, ++taskNumbers, task);
    auto request = prepare(task, std::move(files), isUpload);
    auto error = request ? submit(std::move(request).value(), task.priority, delivery) : request.failure();
    if (!error) return;
    tarvo::platform::log(tarvo::platform::LogLevel::warning, "network",
                         "Request " + std::to_string(delivery->taskNumber()) + " refused: " + error->message);
    delivery->complete({Data(), std::nullopt, std::move(error)});
}

std::optional<NetworkError> BrenNetworkManager::State::submit(PreparedRequest request, BrenTaskPriority priority,
                                                              const std::shared_ptr<Delivery>& delivery) try {
    tarvo::platform::MutexLock lock(mutex);
    if (isShutDown) return networkError(Kind::shutDown, request.host);
    if (!loop) {
        auto fresh = std::make_shared<TransferLoop>(budget);
        fresh->start();
        loop = std::move(fresh);
    }
    TransferSettings settings{authorities.combined(), userAgent, maximumBody};
    loop->submit(std::make_unique<Transfer>(std::move(request), std::move(settings), delivery), priority);
    return std::nullopt;
} catch (const std::system_error&) {
    return networkError(Kind::other, "no thread for the transfers");
}

std::shared_ptr<TransferLoop> BrenNetworkManager::State::takeLoop() {
    tarvo::platform::MutexLock lock(mutex);
    isShutDown = true;
    return std::exchange(loop, nullptr);
}

BrenNetworkManager& BrenNetworkManager::sharedInstance() {
    // Never destroyed, since other threads may still reach it while the process ends. Its thread is stopped then,
    // before libcurl's TLS library takes itself down: that was set up in the constructor, so it goes later. What is
    // under way stays unanswered, and its handlers are not destroyed: what they refer to may be gone.
    static auto* manager = new BrenNetworkManager;
    struct AtExit {
        ~AtExit() {
            static auto* loop = new std::shared_ptr<TransferLoop>(manager->state_->takeLoop());
            if (*loop) (*loop)->stop(TransferLoop::Rest::abandoned);
        }
    };
    static AtExit atExit;
    return *manager;
}

BrenNetworkManager::BrenNetworkManager() {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    state_ = std::make_unique<State>();
}

BrenNetworkManager::~BrenNetworkManager() { shutDown(); }

void BrenNetworkManager::send(Task task) { state_->run(std::move(task), {}, false); }

void BrenNetworkManager::download(Task task) { state_->run(std::move(task), {}, false); }

void BrenNetworkManager::sendUploadRequest(Task task, std::vector<BrenFileUploadInfo> files) {
    state_->run(std::move(task), std::move(files), true);
}

bool BrenNetworkManager::setFurtherAuthorityFile(const std::string& path) {
    return state_->authorities.setFurtherFile(path);
}

void BrenNetworkManager::setMaximumBufferedKilobytes(int kilobytes) {
    state_->budget->setLimit(kilobytes);
    tarvo::platform::MutexLock lock(state_->mutex);
    if (state_->loop) state_->loop->wake();
}

void BrenNetworkManager::setMaximumBodyKilobytes(int kilobytes) {
    if (kilobytes <= 0) return tarvo::platform::reportProgrammingError("Network: the limit of a body must be positive");
    tarvo::platform::MutexLock lock(state_->mutex);
    state_->maximumBody = std::size_t{1024} * static_cast<std::size_t>(kilobytes);
}

void BrenNetworkManager::setUserAgent(const std::string& userAgent) {
    if (userAgent.find_first_of(std::string_view("\r\n\0", 3)) != userAgent.npos)
        return tarvo::platform::log(tarvo::platform::LogLevel::warning, "network",
                                    "A user agent that would break out of its header line is refused");
    tarvo::platform::MutexLock lock(state_->mutex);
    state_->userAgent = userAgent;
}

int BrenNetworkManager::requestCount() const { return state_->taskNumbers; }

const std::shared_ptr<tarvo::DispatchQueue>& BrenNetworkManager::queue() const { return state_->queue; }

void BrenNetworkManager::shutDown() {
    if (auto loop = state_->takeLoop()) loop->stop(TransferLoop::Rest::ended);
}

void BrenNetworkManager::restart() {
    tarvo::platform::MutexLock lock(state_->mutex);
    state_->isShutDown = false;
}

}  // namespace bren
