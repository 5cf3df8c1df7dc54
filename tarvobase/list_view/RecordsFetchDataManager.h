#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarvobase/list_view/FetchRecordNetworkService.h"
#include "tarvobase/list_view/GetFilters.h"
#include "tarvobase/records/RecordPersistanceDelegate.h"
#include "tarvobase/sync/AnswersBesideSync.h"
#include "tarvobase/usecase/ErrorProtocols.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"

namespace tarvo {

class GetFieldListDM;
class RecordIdAliases;

/// Receives the answers of `RecordsFetchDataManager`: stored records on the thread of the call, and the server's
/// answers on the network queue.
class RecordsFetchDataManagerDelegate : public virtual CommonErrorProtocol, public virtual GetRecordsErrorProtocol {
public:
    using Records = std::optional<std::vector<Record>>;

    /// The list is absent if the database cannot be read or knows no fields of the module.
    virtual void record(const Records& records, const RecordQuery& query, const Value& miscData) {
        static_cast<void>(records), static_cast<void>(query), static_cast<void>(miscData);
    }
    /// Brings the stored record, which is absent if there is none, and in a second call the server's record.
    virtual void record(const std::optional<Record>& record, const std::string& recordID, const Module& module,
                        const Value& miscData) {
        static_cast<void>(record), static_cast<void>(recordID), static_cast<void>(module), static_cast<void>(miscData);
    }
    /// Brings tasks, then events, then calls. The list is absent if none of the three could be read.
    virtual void activityRecords(const Records& records, const RecordQuery& query) {
        static_cast<void>(records), static_cast<void>(query);
    }
};

/// Fetches records of the local tables and single records of the server, and reports them to a delegate. May be called
/// from any thread.
class RecordsFetchDataManagerProtocol : public virtual platform::Object {
public:
    std::weak_ptr<RecordsFetchDataManagerDelegate> delegate;

    virtual void getRecords(RecordQuery query, const Value& miscData) = 0;
    virtual void getRecord(const Module& module, const std::string& recordID, const Value& miscData) = 0;
    virtual void getActivityRecords(RecordQuery query, std::int64_t from, std::int64_t to) = 0;
    virtual void getActivitiesRecords(RecordQuery query, bool fetchOnlyOpen) = 0;
};

class RecordsFetchDataManager final : public RecordsFetchDataManagerProtocol,
                                      public RecordDelegate,
                                      public CommonErrorProtocolWithChaining {
public:
    struct Collaborators {
        std::shared_ptr<RecordPersistanceDelegate> recordPersistance;
        std::shared_ptr<ModulesPersistanceDelegate> modulePersistance;
        std::shared_ptr<GetFieldListDM> fieldLists;
        std::shared_ptr<FetchRecordNetworkServiceProtocol> recordFetchNetworkService;
        std::shared_ptr<RecordIdAliases> recordIdAliases;
        std::optional<AnswersBesideSync> answersBesideSync{};
    };
    /// The data manager becomes the service's delegate.
    static std::shared_ptr<RecordsFetchDataManager> make(Collaborators collaborators);
    /// Uses the database that is open at this moment.
    static std::shared_ptr<RecordsFetchDataManager> current();

    const Collaborators collaborators;

    /// Fetches stored records, newest first if the query names no order; activities do the same. The delegate is called
    /// before this returns.
    void getRecords(RecordQuery query, const Value& miscData) override;
    /// Reports the stored record before it returns, and always asks the server as well. The server's record is stored
    /// and reported. The failures are `unableToConvertRecordFromDictionaryError` if the server has no such record or
    /// its answer gives none, `unableToGetIDForRecordError` if the record lacks its id, and the failure of the request
    /// itself. Both notices have the id of the call, which may be a temporary one; the record has its real id once it
    /// has one. As long as the server has not accepted the record, it is not asked: the second notice then repeats the
    /// first, or is `unableToConvertRecordFromDictionaryError` if there is no such record.
    void getRecord(const Module& module, const std::string& recordID, const Value& miscData) override;
    /// Fetches the tasks, events and calls of a span of time. Moments are seconds since 1970; the first is included,
    /// the second is not. A query on "Activities" reads the table that the three share; any other query reads the
    /// tables of the three. The view, filters and limits of the query apply to each of the three separately. The
    /// delegate is called before this returns.
    void getActivityRecords(RecordQuery query, std::int64_t from, std::int64_t to) override;
    /// Fetches the activities that are still to be done, or those that are done.
    void getActivitiesRecords(RecordQuery query, bool fetchOnlyOpen) override;

    void parsedRecords(const std::vector<ValueMap>& records, const RecordFetch& fetch) override;
    std::shared_ptr<CommonErrorProtocol> nextCommonErrorProtocolResponder() override { return delegate.lock(); }

private:
    explicit RecordsFetchDataManager(Collaborators collaborators) : collaborators(std::move(collaborators)) {}

    using Records = RecordsFetchDataManagerDelegate::Records;
    /// One kind of activity, and the filters that its records must pass.
    struct Activity {
        std::string_view moduleName;
        GetColumnFilter::Filters filters;
    };
    void reportActivities(RecordQuery query, const std::vector<Activity>& activities);
    Records recordsOf(const Activity& activity, RecordQuery query) const;
};

}  // namespace tarvo
