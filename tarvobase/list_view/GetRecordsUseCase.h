#pragma once

#include "tarvobase/list_view/RecordsFetchDataManager.h"
#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/usecase/NoticesOnMainQueue.h"

namespace tarvo {

/// Hears the answers of `GetRecordsUseCase`, and what failed, on the main queue.
class GetRecordsUseCaseDelegate : public RecordsFetchDataManagerDelegate {};

class GetRecordsUseCaseProtocol : public virtual platform::Object {
public:
    /// What `miscData` holds comes back with the answer. One `record` answers.
    virtual void getRecords(RecordQuery query, Value miscData = {}) = 0;
    /// Two notices answer: `record` with the stored record, and then `record` with the server's or what failed.
    virtual void getRecord(const Module& module, const std::string& recordID, Value miscData = {}) = 0;
    /// Dates are seconds since 1970. One `activityRecords` answers these two.
    virtual void getActivityRecords(RecordQuery query, std::int64_t from, std::int64_t to) = 0;
    virtual void getActivitiesRecords(RecordQuery query, bool fetchOnlyOpen) = 0;
};

/// Records of lists that are judged on the local tables alone, and single records of both sides, told to a delegate.
/// Held by `shared_ptr`; when it is let go, nothing more is told.
class GetRecordsUseCase final : public DelegateUseCase<GetRecordsUseCaseDelegate>,
                                public GetRecordsUseCaseProtocol,
                                public RecordsFetchDataManagerDelegate,
                                public CommonErrorsOnMainQueue,
                                public GetRecordsErrorsOnMainQueue {
public:
    /// Over the database that is open at this moment.
    static std::shared_ptr<GetRecordsUseCase> make() { return make(RecordsFetchDataManager::current()); }
    /// Becomes the data manager's delegate.
    static std::shared_ptr<GetRecordsUseCase> make(std::shared_ptr<RecordsFetchDataManagerProtocol> dataManager);

    void getRecords(RecordQuery query, Value miscData = {}) override;
    void getRecord(const Module& module, const std::string& recordID, Value miscData = {}) override;
    void getActivityRecords(RecordQuery query, std::int64_t from, std::int64_t to) override;
    void getActivitiesRecords(RecordQuery query, bool fetchOnlyOpen) override;

    const std::shared_ptr<RecordsFetchDataManagerProtocol> dataManager;

    // What the data manager tells.
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
