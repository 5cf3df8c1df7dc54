#pragma once

#include "tarvobase/network_layer/BaseNetworkService.h"
#include "tarvobase/record_changes/wire/ChangeAnswer.h"

namespace tarvo {

enum class AddRecordNetworkServiceOperation { add, edit };

/// A record that is to be added or edited on the server.
struct AddEditRecordRequest {
    platform::Data jsonData;  ///< the body: {"data": [payload]}
    ValueMap params;          ///< `NetworkParamConstant::AddEditRecord`
    AddRecordNetworkServiceOperation operation = AddRecordNetworkServiceOperation::add;
    std::string recordID;  ///< the edited record, which the answer must name; not read for an add
    std::string key;       ///< the same UUID each time that this payload is sent
    bool isNote = false;   ///< whether the answer is read as that to a note
};

class AddEditRecordNetworkServiceProtocol : public virtual platform::Object {
public:
    virtual void addRecord(AddEditRecordRequest request, ChangeCompletion completion) = 0;
};

/// Adds and edits records. One value says what became of a request, in place of notices to a delegate: who sends a
/// change needs the difference between a refusal, an answer that cannot be read, and none.
class AddEditRecordNetworkService final : public BaseNetworkService, public AddEditRecordNetworkServiceProtocol {
public:
    AddEditRecordNetworkService() : BaseNetworkService(CRMAPIs::Case::addRecord) {}
    void addRecord(AddEditRecordRequest request, ChangeCompletion completion) override;
};

}  // namespace tarvo
