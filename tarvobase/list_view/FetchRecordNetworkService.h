#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/network_layer/BaseNetworkService.h"
#include "tarvobase/value_objects/module/Module.h"

namespace tarvo {

/// A record that is asked for, and what its caller wants back with the answer.
struct RecordFetch {
    Module module;
    std::string recordID;
    Value miscData{};
};

/// Hears of the answers of `FetchRecordNetworkService`, on the network queue.
class RecordDelegate : public virtual platform::Object {
public:
    /// The record as a wire dictionary; no dictionary when the server has no such record.
    virtual void parsedRecords(const std::vector<ValueMap>& records, const RecordFetch& fetch) = 0;
};

class FetchRecordNetworkServiceProtocol : public virtual platform::Object {
public:
    std::weak_ptr<RecordDelegate> recordDelegate;
    virtual void fetchRecord(RecordFetch fetch) = 0;
};

/// Asks the server for one record. Every call ends in one notice: `parsedRecords`, or at `errorHandler` one of
/// `noAuthtoken`, `networkResponseError` and, for a refusal or an answer that cannot be read, `parsingError`.
class FetchRecordNetworkService final : public BaseNetworkService, public FetchRecordNetworkServiceProtocol {
public:
    FetchRecordNetworkService() : BaseNetworkService(CRMAPIs::Case::getRecord) {}
    void fetchRecord(RecordFetch fetch) override;

private:
    void answered(const NetworkAnswer& answer, const RecordFetch& fetch);
};

}  // namespace tarvo
