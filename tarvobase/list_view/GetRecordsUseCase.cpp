#include "tarvobase/list_view/GetRecordsUseCase.h"

namespace tarvo {

using RecordsDelegate = GetRecordsUseCaseDelegate;
using DataManager = RecordsFetchDataManagerProtocol;

std::shared_ptr<GetRecordsUseCase> GetRecordsUseCase::make(std::shared_ptr<DataManager> dataManager) {
    std::shared_ptr<GetRecordsUseCase> usecase(new GetRecordsUseCase(std::move(dataManager)));
    usecase->dataManager->delegate = usecase;
    return usecase;
}

template <class Work>
void GetRecordsUseCase::ask(Work work) {
    CommonUtils::performAsyncInBackground([weak = platform::weakSelf(this), work = std::move(work)] {
        if (auto self = weak.lock()) work(*self->dataManager);
    });
}

template <class Notice>
void GetRecordsUseCase::tell(Notice notice) {
    CommonUtils::performAsyncInMain([weak = platform::weakSelf(this), notice = std::move(notice)] {
        auto self = weak.lock();
        auto listener = self ? self->delegate.lock() : nullptr;
        if (listener) notice(*listener);
    });
}

void GetRecordsUseCase::getRecords(RecordQuery query, Value miscData) {
    ask([query = std::move(query), miscData](DataManager& records) { records.getRecords(query, miscData); });
}
void GetRecordsUseCase::getRecord(const Module& module, const std::string& recordID, Value miscData) {
    ask([module, recordID, miscData](DataManager& records) { records.getRecord(module, recordID, miscData); });
}
void GetRecordsUseCase::getActivityRecords(RecordQuery query, std::int64_t from, std::int64_t to) {
    ask([query = std::move(query), from, to](DataManager& records) { records.getActivityRecords(query, from, to); });
}
void GetRecordsUseCase::getActivitiesRecords(RecordQuery query, bool fetchOnlyOpen) {
    ask([query = std::move(query), fetchOnlyOpen](DataManager& records) {
        records.getActivitiesRecords(query, fetchOnlyOpen);
    });
}

void GetRecordsUseCase::record(const Records& records, const RecordQuery& query, const Value& miscData) {
    tell([=](RecordsDelegate& listener) { listener.record(records, query, miscData); });
}
void GetRecordsUseCase::record(const std::optional<Record>& record, const std::string& recordID, const Module& module,
                               const Value& miscData) {
    tell([=](RecordsDelegate& listener) { listener.record(record, recordID, module, miscData); });
}
void GetRecordsUseCase::activityRecords(const Records& records, const RecordQuery& query) {
    tell([=](RecordsDelegate& listener) { listener.activityRecords(records, query); });
}
void GetRecordsUseCase::unableToConvertRecordFromDictionaryError() {
    tell([](RecordsDelegate& listener) { listener.unableToConvertRecordFromDictionaryError(); });
}
void GetRecordsUseCase::unableToGetIDForRecordError() {
    tell([](RecordsDelegate& listener) { listener.unableToGetIDForRecordError(); });
}

}  // namespace tarvo
