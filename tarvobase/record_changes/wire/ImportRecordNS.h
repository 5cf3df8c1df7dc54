#pragma once

#include <functional>
#include <string>

#include "tarvobase/network_layer/BaseNetworkService.h"
#include "tarvobase/record_changes/wire/ChangeAnswerParser.h"

namespace tarvo {

/// Several records that are to be added on the server with one request.
struct ImportRecordRequest {
    platform::Data data;    ///< the body: {"data": [record, ...]}
    ValueMap params;        ///< `NetworkParamConstant::AddEditRecord`
    std::size_t count = 0;  ///< records in the body
    std::string key;        ///< the same UUID each time that this payload is sent
};

/// Runs exactly once per request, on the network queue, unless the service is released before the host hands out a
/// token.
using ImportCompletion = std::function<void(ImportAnswer answer)>;

class ImportRecordNSP : public virtual platform::Object {
public:
    virtual void addRecords(ImportRecordRequest request, ImportCompletion completion) = 0;
};

class ImportRecordNS final : public BaseNetworkService, public ImportRecordNSP {
public:
    ImportRecordNS() : BaseNetworkService(CRMAPIs::Case::addRecord) {}
    void addRecords(ImportRecordRequest request, ImportCompletion completion) override;
};

}  // namespace tarvo
