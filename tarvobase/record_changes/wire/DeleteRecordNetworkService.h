#pragma once

#include "tarvobase/network_layer/BaseNetworkService.h"
#include "tarvobase/record_changes/wire/ChangeAnswer.h"

namespace tarvo {

/// A record that is to be deleted on the server.
struct DeleteRecordRequest {
    ValueMap params;  ///< `NetworkParamConstant::DeleteRecord`
    std::string recordID;
    std::string key;  ///< the same UUID each time that this delete is sent
};

class DeleteRecordNetworkServiceProtocol : public virtual platform::Object {
public:
    virtual void deleteRecord(DeleteRecordRequest request, ChangeCompletion completion) = 0;
};

class DeleteRecordNetworkService final : public BaseNetworkService, public DeleteRecordNetworkServiceProtocol {
public:
    DeleteRecordNetworkService() : BaseNetworkService(CRMAPIs::Case::deleteRecord) {}
    void deleteRecord(DeleteRecordRequest request, ChangeCompletion completion) override;
};

}  // namespace tarvo
