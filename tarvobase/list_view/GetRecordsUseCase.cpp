#include "tarvobase/list_view/GetRecordsUseCase.h"

namespace tarvo {

using RecordsDelegate = GetRecordsUseCaseDelegate;
using DataManager = RecordsFetchDataManagerProtocol;

std::shared_ptr<GetRecordsUseCase> GetRecordsUseCase::make(std::shared_ptr<DataManager> dataManager) {
    std::shared_ptr<GetRecordsUseCase> usecase(new GetRecordsUseCase(std::move(dataManager)));
    usecase->dataManager->delegate = usecase;
    return usecase;
}

void GetRecordsUseCase::getRecords(RecordQuery query, Value miscData) {
    inBackground([records = dataManager, query = std::move(query), miscData] { records->getRecords(query, miscData); });
}
void GetRecordsUseCase::getRecord(const Module& module, const std::string& recordID, Value miscData) {
    inBackground(
        [records = dataManager, module, recordID, miscData] { records->getRecord(module, recordID, miscData); });
}
void GetRecordsUseCase::getActivityRecords(RecordQuery query, std::int64_t from, std::int64_t to) {
    inBackground(
        [records = dataManager, query = std::move(query), from, to] { records->getActivityRecords(query, from, to); });
}
void GetRecordsUseCase::getActivitiesRecords(RecordQuery query, bool fetchOnlyOpen) {
    inBackground([records = dataManager, query = std::move(query), fetchOnlyOpen] {
        records->getActivitiesRecords(query, fetchOnlyOpen);
    });
}

void GetRecordsUseCase::record(const Records& records, const RecordQuery& query, const Value& miscData) {
    notifyDelegate([=](RecordsDelegate& listener) { listener.record(records, query, miscData); });
}
void GetRecordsUseCase::record(const std::optional<Record>& record, const std::string& recordID, const Module& module,
                               const Value& miscData) {
    notifyDelegate([=](RecordsDelegate& listener) { listener.record(record, recordID, module, miscData); });
}
void GetRecordsUseCase::activityRecords(const Records& records, const RecordQuery& query) {
    notifyDelegate([=](RecordsDelegate& listener) { listener.activityRecords(records, query); });
}

}  // namespace tarvo
