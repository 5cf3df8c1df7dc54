#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/list_view/FetchRecordNetworkService.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"
#include "tarvobase/sync/RecordsSyncDataManager.h"

namespace tarvo {

/// Brings what the server made of a record after its decision on a change. It may be called from any thread; answers
/// are stored on the network queue. A request that fails changes nothing: the next answer that holds the record does
/// what this one should have done.
class RecordRefetch final : public RecordDelegate {
public:
    enum class Reason {
        /// The server has accepted a change, which is not stored yet. A page of a round that is on its way may be older
        /// than the change and come after it. One more round corrects what that page does.
        acceptance,
        /// The answer to an add or edit had the id alone. A round of sync brings the record, and whatever else the
        /// server changed by it.
        bareAcceptance,
        refusedDelete,  ///< a record that the server keeps comes back
        cancelled       ///< the record is wanted as the server has it now
    };

    /// Becomes the delegate of the service.
    static std::shared_ptr<RecordRefetch> make(const Stores& stores, std::shared_ptr<RecordPersistanceDelegate> records,
                                               std::shared_ptr<RecordsSyncDataManagerProtocol> sync,
                                               std::shared_ptr<FetchRecordNetworkServiceProtocol> service);

    /// Asks the server. Does nothing for a module that is not stored.
    void fetch(const std::string& moduleName, const std::string& recordId, Reason reason) const;

    void parsedRecords(const std::vector<ValueMap>& records, const RecordFetch& fetch) override;

private:
    RecordRefetch(const Stores& stores, std::shared_ptr<RecordPersistanceDelegate> records,
                  std::shared_ptr<RecordsSyncDataManagerProtocol> sync,
                  std::shared_ptr<FetchRecordNetworkServiceProtocol> service)
        : stores_(stores), records_(std::move(records)), sync_(std::move(sync)), service_(std::move(service)) {}

    void sync(const std::string& moduleName, Reason reason) const;
    bool store(const ValueMap& record, const std::string& moduleName) const;
    void dropRefusedDeletes(const std::string& moduleName, const std::string& recordId) const;

    const Stores stores_;
    const std::shared_ptr<RecordPersistanceDelegate> records_;
    const std::shared_ptr<RecordsSyncDataManagerProtocol> sync_;
    const std::shared_ptr<FetchRecordNetworkServiceProtocol> service_;
};

}  // namespace tarvo
