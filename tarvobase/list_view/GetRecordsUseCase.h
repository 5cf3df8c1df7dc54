#pragma once

#include "tarvobase/list_view/RecordsFetchDataManager.h"
#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/usecase/NoticesOnMainQueue.h"

namespace tarvo {

/// Receives the answers of `GetRecordsUseCase` and its failures, on the main queue.
class GetRecordsUseCaseDelegate : public RecordsFetchDataManagerDelegate {};

class GetRecordsUseCaseProtocol : public virtual platform::Object {
public:
    /// Answers with one `record`, which brings `miscData` back.
    virtual void getRecords(RecordQuery query, Value miscData = {}) = 0;
    /// Answers with two notices: `record` with the stored record, then `record` with the server's record or a failure.
    /// The id may be a temporary one; the server is asked once it has accepted the record.
    virtual void getRecord(const Module& module, const std::string& recordID, Value miscData = {}) = 0;
    /// Answers with one `activityRecords`. Dates are seconds since 1970.
    virtual void getActivityRecords(RecordQuery query, std::int64_t from, std::int64_t to) = 0;
    /// Answers with one `activityRecords`.
    virtual void getActivitiesRecords(RecordQuery query, bool fetchOnlyOpen) = 0;
};

/// Fetches lists of records from the local tables, and single records from both sides, and reports to a delegate. Held
/// by `shared_ptr`. The delegate gets no further callback once the use case is released.
class GetRecordsUseCase final : public DelegateUseCase<GetRecordsUseCaseDelegate>,
                                public GetRecordsUseCaseProtocol,
                                public RecordsFetchDataManagerDelegate,
                                public CommonErrorsOnMainQueue,
                                public GetRecordsErrorsOnMainQueue {
public:
    /// Uses the database that is open at this moment.
    static std::shared_ptr<GetRecordsUseCase> make() { return make(RecordsFetchDataManager::current()); }
    /// The use case becomes the data manager's delegate.
    static std::shared_ptr<GetRecordsUseCase> make(std::shared_ptr<RecordsFetchDataManagerProtocol> dataManager);

    void getRecords(RecordQuery query, Value miscData = {}) override;
    void getRecord(const Module& module, const std::string& recordID, Value miscData = {}) override;
    void getActivityRecords(RecordQuery query, std::int64_t from, std::int64_t to) override;
    void getActivitiesRecords(RecordQuery query, bool fetchOnlyOpen) override;

    const std::shared_ptr<RecordsFetchDataManagerProtocol> dataManager;

    // Callbacks of the data manager.
    void record(const Records& records, const RecordQuery& query, const Value& miscData) override;
    void record(const std::optional<Record>& record, const std::string& recordID, const Module& module,
                const Value& miscData) override;
    void activityRecords(const Records& records, const RecordQuery& query) override;
    std::shared_ptr<CommonErrorProtocol> nextCommonErrorProtocolResponder() override { return delegate.lock(); }
    std::shared_ptr<GetRecordsErrorProtocol> nextGetRecordsErrorProtocolResponder() override { return delegate.lock(); }

private:
    explicit GetRecordsUseCase(std::shared_ptr<RecordsFetchDataManagerProtocol> dataManager)
        : dataManager(std::move(dataManager)) {}
};

}  // namespace tarvo
