#include "tarvobase/network_layer/NetworkAccess.h"

#include "bren_network/BrenNetworkManager.h"

namespace tarvo {

bool trustFurtherAuthority(const std::string& file) {
    return bren::BrenNetworkManager::sharedInstance().setFurtherAuthorityFile(file);
}

const std::shared_ptr<DispatchQueue>& networkQueue() { return bren::BrenNetworkManager::sharedInstance().queue(); }

int requestCount() { return bren::BrenNetworkManager::sharedInstance().requestCount(); }

}  // namespace tarvo
