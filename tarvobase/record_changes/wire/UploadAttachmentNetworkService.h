#pragma once

#include "tarvobase/network_layer/StaticBaseNetworkService.h"
#include "tarvobase/record_changes/wire/ChangeAnswer.h"

namespace tarvo {

/// A file that is to be attached to a record on the server.
struct UploadAttachmentRequest {
    ValueMap params;
    std::string fileURL;  ///< path of the file
    std::string key;      ///< the same UUID each time that this file is sent
};

class UploadAttachmentNetworkServiceProtocol : public virtual platform::Object {
public:
    /// A file that cannot be read is a refusal: sending it again would not help.
    virtual void uploadAttachment(UploadAttachmentRequest request, ChangeCompletion completion) = 0;
};

class UploadAttachmentNetworkService final : public StaticBaseNetworkService,
                                             public UploadAttachmentNetworkServiceProtocol {
public:
    using StaticBaseNetworkService::StaticBaseNetworkService;
    std::string baseURL() const override { return networkConstants->getURL(CRMAPIs::Case::uploadAttachment); }
    void uploadAttachment(UploadAttachmentRequest request, ChangeCompletion completion) override;
};

}  // namespace tarvo
