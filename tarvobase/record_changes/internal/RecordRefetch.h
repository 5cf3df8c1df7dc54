#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/list_view/FetchRecordNetworkService.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"

namespace tarvo {

/// Fetches the record of a change that the server has decided, and stores it. It may be called from any thread; answers
/// are stored on the network queue. A request that fails changes nothing: the next answer that holds the record does
/// what this one should have done.
class RecordRefetch final : public RecordDelegate {
public:
    enum class Reason {
        bareAcceptance,  ///< the answer to an add or edit had the id alone and lacks what the server made of the record
        refusedDelete    ///< a record that the server keeps comes back
    };

    /// Becomes the delegate of the service.
    static std::shared_ptr<RecordRefetch> make(const Stores& stores, std::shared_ptr<RecordPersistanceDelegate> records,
                                               std::shared_ptr<FetchRecordNetworkServiceProtocol> service);

    /// Asks the server for a record. Does nothing for a module that is not stored.
    void fetch(const std::string& moduleName, const std::string& recordId, Reason reason) const;

    void parsedRecords(const std::vector<ValueMap>& records, const RecordFetch& fetch) override;

private:
    RecordRefetch(const Stores& stores, std::shared_ptr<RecordPersistanceDelegate> records,
                  std::shared_ptr<FetchRecordNetworkServiceProtocol> service)
        : stores_(stores), records_(std::move(records)), service_(std::move(service)) {}

    bool storeOver(const ValueMap& former, const ValueMap& record, const std::string& moduleName,
                   const std::string& recordId) const;
    bool store(const ValueMap& record, const std::string& moduleName) const;
    void dropRefusedDeletes(const std::string& moduleName, const std::string& recordId) const;

    const Stores stores_;
    const std::shared_ptr<RecordPersistanceDelegate> records_;
    const std::shared_ptr<FetchRecordNetworkServiceProtocol> service_;
};

}  // namespace tarvo
