#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/network_layer/BaseNetworkService.h"
#include "tarvobase/value_objects/module/Module.h"

namespace tarvo {

/// Which record to fetch, and a value that the caller gets back with the answer.
struct RecordFetch {
    Module module;
    std::string recordID;
    Value miscData{};
    std::optional<std::string> formerRecordID{};  ///< the temporary id by which the caller knows the record
    std::optional<std::int64_t> responseTime{};   ///< of the answer, in milliseconds since 1970
};

/// Receives the answers of `FetchRecordNetworkService`, on the network queue.
class RecordDelegate : public virtual platform::Object {
public:
    /// Brings the record as a wire dictionary. The list is empty if the server has no such record.
    virtual void parsedRecords(const std::vector<ValueMap>& records, const RecordFetch& fetch) = 0;
};

class FetchRecordNetworkServiceProtocol : public virtual platform::Object {
public:
    std::weak_ptr<RecordDelegate> recordDelegate;
    virtual void fetchRecord(RecordFetch fetch) = 0;
};

/// Asks the server for one record. Every call ends with one notice. A success is `parsedRecords`. A failure goes to
/// `errorHandler`: `noAuthtoken`, `networkResponseError`, or `parsingError` for a refusal or an unreadable answer.
class FetchRecordNetworkService final : public BaseNetworkService, public FetchRecordNetworkServiceProtocol {
public:
    FetchRecordNetworkService() : BaseNetworkService(CRMAPIs::Case::getRecord) {}
    void fetchRecord(RecordFetch fetch) override;

private:
    void answered(const NetworkAnswer& answer, const RecordFetch& fetch);
};

}  // namespace tarvo
