#pragma once

#include <memory>
#include <string>

#include "platform/Object.h"
#include "tarvobase/record_changes/wire/AddEditRecordNetworkService.h"
#include "tarvobase/record_changes/wire/ChangeAnswer.h"
#include "tarvobase/record_changes/wire/DeleteRecordNetworkService.h"
#include "tarvobase/record_changes/wire/UploadAttachmentNetworkService.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

namespace tarvo {

/// Sends rows of the older queue.
class ChangeSender : public virtual platform::Object {
public:
    /// Calls back exactly once, on any thread, unless the sender is released before.
    virtual void send(const Transaction& change, const std::string& key, ChangeCompletion completion) = 0;
};

/// Sends each kind of row through its network service. Make it for the scope of the queue.
class NetworkChangeSender final : public ChangeSender {
public:
    void send(const Transaction& change, const std::string& key, ChangeCompletion completion) override;

    std::shared_ptr<AddEditRecordNetworkServiceProtocol> addEditService =
        std::make_shared<AddEditRecordNetworkService>();
    std::shared_ptr<DeleteRecordNetworkServiceProtocol> deleteService = std::make_shared<DeleteRecordNetworkService>();
    std::shared_ptr<UploadAttachmentNetworkServiceProtocol> uploadService =
        std::make_shared<UploadAttachmentNetworkService>();
};

}  // namespace tarvo
