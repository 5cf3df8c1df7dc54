#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tarvobase/list_view/FetchRecordNetworkService.h"
#include "tarvobase/list_view/GetFilters.h"
#include "tarvobase/records/sql/RecordPersistanceDelegate.h"
#include "tarvobase/usecase/ErrorProtocols.h"
#include "tarvobase/value_objects/module/ModulesPersistanceDelegate.h"

namespace tarvo {

class GetFieldListDM;

/// Hears of `RecordsFetchDataManager`, on the thread of the question or, of the server's answers, on the network queue.
class RecordsFetchDataManagerDelegate : public virtual CommonErrorProtocol, public virtual GetRecordsErrorProtocol {
public:
    using Records = std::optional<std::vector<Record>>;

    /// Absent when the database does not answer or knows no fields of the module.
    virtual void record(const Records& records, const RecordQuery& query, const Value& miscData) {
        static_cast<void>(records), static_cast<void>(query), static_cast<void>(miscData);
    }
    /// The stored record, absent when there is none, and in a second call the server's.
    virtual void record(const std::optional<Record>& record, const std::string& recordID, const Module& module,
                        const Value& miscData) {
        static_cast<void>(record), static_cast<void>(recordID), static_cast<void>(module), static_cast<void>(miscData);
    }
    /// Tasks, then events, then calls. Absent when none of the three could be read.
    virtual void activityRecords(const Records& records, const RecordQuery& query) {
        static_cast<void>(records), static_cast<void>(query);
    }
};

/// Records of the local tables, told to a delegate, and single records of the server. From any thread.
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
    };
    /// Listens to the service.
    static std::shared_ptr<RecordsFetchDataManager> make(Collaborators collaborators);
    /// Over the database that is open at this moment.
    static std::shared_ptr<RecordsFetchDataManager> current();

    const Collaborators collaborators;

    /// Newest first where no order is asked for; so with activities. Tells before it returns.
    void getRecords(RecordQuery query, const Value& miscData) override;
    /// Tells the stored record before it returns, and in any case asks the server; what comes is stored, and the
    /// delegate hears of it, of `unableToConvertRecordFromDictionaryError` where the server has no such record or none
    /// can be made of it, of `unableToGetIDForRecordError` where it lacks its id, or of the failure of the request.
    void getRecord(const Module& module, const std::string& recordID, const Value& miscData) override;
    /// Tasks, events and calls of a span of time: from the first moment on, before the second, in seconds since 1970.
    /// A query on "Activities" reads the table that the three share, any other the tables of the three; its view, its
    /// filters and its limits count for each of the three by itself. Tells before it returns.
    void getActivityRecords(RecordQuery query, std::int64_t from, std::int64_t to) override;
    /// Those that are still to be done, or those that are done.
    void getActivitiesRecords(RecordQuery query, bool fetchOnlyOpen) override;

    void parsedRecords(const std::vector<ValueMap>& records, const RecordFetch& fetch) override;
    std::shared_ptr<CommonErrorProtocol> nextCommonErrorProtocolResponder() override { return delegate.lock(); }

private:
    explicit RecordsFetchDataManager(Collaborators collaborators) : collaborators(std::move(collaborators)) {}

    using Records = RecordsFetchDataManagerDelegate::Records;
    /// One kind of activity and the filters that its records must pass.
    struct Activity {
        std::string_view moduleName;
        GetColumnFilter::Filters filters;
    };
    void tellActivities(RecordQuery query, const std::vector<Activity>& activities);
    Records recordsOf(const Activity& activity, RecordQuery query) const;
};

}  // namespace tarvo
