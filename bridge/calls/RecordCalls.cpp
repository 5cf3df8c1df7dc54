#include "bridge/DelegateLines.h"
#include "bridge/calls/Calls.h"
#include "bridge/forms/RecordForms.h"
#include "tarvobase/get_metadata/GetRecordCount.h"
#include "tarvobase/get_metadata/ReduceMetadataForEdit.h"
#include "tarvobase/list_view/GetRecordsUseCase.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/usecase/Usecase.h"

namespace tarvo::bridge {

namespace {

struct RecordsRequest : JsonRecordQuery {
    Value miscData;
    static constexpr auto fields() {
        return describe(JsonRecordQuery::fields(), optionalField("miscData", &RecordsRequest::miscData));
    }
};
struct RecordRequest {
    std::string moduleName;
    std::string recordID;
    Value miscData;
    static constexpr auto fields() {
        return describe(field("moduleName", &RecordRequest::moduleName), field("recordID", &RecordRequest::recordID),
                        optionalField("miscData", &RecordRequest::miscData));
    }
};
/// The dates are seconds since 1970.
struct DatesRequest : JsonRecordQuery {
    std::int64_t fromDate = 0, toDate = 0;
    static constexpr auto fields() {
        return describe(JsonRecordQuery::fields(), field("fromDate", &DatesRequest::fromDate),
                        field("toDate", &DatesRequest::toDate));
    }
};
struct OpenRequest : JsonRecordQuery {
    bool fetchOnlyOpen = false;
    static constexpr auto fields() {
        return describe(JsonRecordQuery::fields(), field("fetchOnlyOpen", &OpenRequest::fetchOnlyOpen));
    }
};

struct CountRequest {
    std::string moduleName;
    static constexpr auto fields() { return describe(field("moduleName", &CountRequest::moduleName)); }
};
/// Columns are identifiers.
struct ReduceRequest {
    std::string moduleName;
    std::vector<JsonRecord> records;
    std::vector<std::string> columns;
    static constexpr auto fields() {
        return describe(field("moduleName", &ReduceRequest::moduleName), field("records", &ReduceRequest::records),
                        field("columns", &ReduceRequest::columns));
    }
};

class RecordsLines final : public CommonErrorLines,
                           public ErrorLines<GetRecordsErrorRelay>,
                           public GetRecordsUseCaseDelegate {
public:
    void record(const Records& records, const RecordQuery& query, const Value& miscData) override {
        report("record", {{"records", toJson(records)},
                          {"moduleName", toJson(query.module.moduleName)},
                          {"miscData", toJson(miscData)}});
    }
    void record(const std::optional<Record>& record, const std::string& recordID, const Module& module,
                const Value& miscData) override {
        report("record", {{"record", toJson(record)},
                          {"recordID", toJson(recordID)},
                          {"moduleName", toJson(module.moduleName)},
                          {"miscData", toJson(miscData)}});
    }
    void activityRecords(const Records& records, const RecordQuery& query) override {
        report("activityRecords", {{"records", toJson(records)}, {"moduleName", toJson(query.module.moduleName)}});
    }
};

/// The delegate receives the stored record first, and then the server's record or a failure.
void getRecord(const RecordRequest& request, const CallPtr& call) {
    JsonRecordQuery named;
    named.moduleName = request.moduleName;
    if (auto missing = named.complete()) return call->refuse(*missing);
    auto usecase = GetRecordsUseCase::make();
    auto lines = linesFor<RecordsLines>(call);
    lines->listener = [call, count = 0](std::string_view name, ValueMap arguments) mutable {
        call->delegate(name, std::move(arguments));
        if (++count == 2) call->finish();
    };
    usecase->delegate = lines;
    call->keepUntilEnd(usecase);
    usecase->getRecord(named.module, request.recordID, request.miscData);
}

/// Reads in the background. A member is left out if it is absent.
void getRecordCount(const CountRequest& request, const CallPtr& call) {
    UsecaseQueue::queue()->async([request, call] {
        auto stores = Stores::current();
        auto count = GetRecordCount::make(request.moduleName, stores.databaseAdapter(), stores.userDefaults);
        ValueMap response;
        if (auto records = count->getCount()) response.set("count", *records);
        if (auto time = count->getLastSyncTime()) response.set("lastSyncTime", *time);
        call->done("response", std::move(response));
    });
}

void reduceForEdit(const ReduceRequest& request, const CallPtr& call) {
    std::vector<Record> records;
    for (auto& record : request.records) records.push_back(record.record());
    auto reduced =
        ReduceMetadataForEdit::reduce(records, request.columns, ModuleIdentifier::fromModuleName(request.moduleName));
    call->done("response", ValueMap{{"records", toJson(reduced)}});
}

/// Registers a request for a list, which one notice answers.
template <class Request, class Ask>
void addList(Registry& registry, const std::string& name, Ask ask) {
    registry.addOperation<Request>("GetRecordsUseCase." + name, [ask](Request request, const CallPtr& call) {
        if (auto missing = request.complete()) return call->refuse(*missing);
        ask(*answeringOnce<RecordsLines>(GetRecordsUseCase::make(), call), request);
    });
}

}  // namespace

void addRecordCalls(Registry& registry) {
    addList<RecordsRequest>(registry, "getRecords", [](GetRecordsUseCase& usecase, const RecordsRequest& request) {
        usecase.getRecords(request, request.miscData);
    });
    registry.addOperation<RecordRequest>("GetRecordsUseCase.getRecord", getRecord);
    registry.addOperation<CountRequest>("GetRecordCount", getRecordCount);
    registry.addOperation<ReduceRequest>("ReduceMetadataForEdit", reduceForEdit);
    addList<DatesRequest>(registry, "getActivityRecords", [](GetRecordsUseCase& usecase, const DatesRequest& request) {
        usecase.getActivityRecords(request, request.fromDate, request.toDate);
    });
    addList<OpenRequest>(registry, "getActivitiesRecords", [](GetRecordsUseCase& usecase, const OpenRequest& request) {
        usecase.getActivitiesRecords(request, request.fetchOnlyOpen);
    });
}

}  // namespace tarvo::bridge
