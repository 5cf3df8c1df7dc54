#include "tarvobase/list_view/RecordsFetchDataManager.h"

#include <algorithm>

#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/records/sql/FilterToWhereConverter.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/records/wire/RecordConversion.h"
#include "tarvobase/utils/TemporaryIds.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

constexpr std::string_view allActivities = "Activities", tasks = "Tasks", events = "Events", calls = "Calls";

RecordQuery ordered(RecordQuery query) {
    if (!query.columnsToSortWith)
        query.columnsToSortWith.emplace(
            {Sort<std::string>{std::string(FieldIdentifierConstants().createdTime), SortOrder::descending}});
    return query;
}

/// Adds a condition to the conditions of a query.
void restrict(RecordQuery& query, const std::string& condition) {
    query.customQuery = query.customQuery ? "(" + *query.customQuery + ") AND " + condition : condition;
}

}  // namespace

std::shared_ptr<RecordsFetchDataManager> RecordsFetchDataManager::make(Collaborators collaborators) {
    std::shared_ptr<RecordsFetchDataManager> manager(new RecordsFetchDataManager(std::move(collaborators)));
    manager->collaborators.recordFetchNetworkService->recordDelegate = manager;
    return manager;
}

std::shared_ptr<RecordsFetchDataManager> RecordsFetchDataManager::current() {
    auto stores = Stores::current();
    auto& adapter = stores.databaseAdapter();
    auto service = std::make_shared<FetchRecordNetworkService>();
    auto manager = make({.recordPersistance = RecordInDatabase::make(adapter),
                         .modulePersistance = stores.modules(),
                         .fieldLists = FieldListAssembler::getFieldListDM(adapter),
                         .recordFetchNetworkService = service,
                         .recordIdAliases = stores.recordIdAliases(),
                         .answersBesideSync = AnswersBesideSync(stores.scope, stores.userDefaults)});
    service->errorHandler = manager;
    return manager;
}

void RecordsFetchDataManager::getRecords(RecordQuery query, const Value& miscData) {
    query = ordered(std::move(query));
    auto records = collaborators.recordPersistance->fetchRecords(query);
    if (auto listener = delegate.lock()) listener->record(records, query, miscData);
}

void RecordsFetchDataManager::getRecord(const Module& module, const std::string& recordID, const Value& miscData) {
    auto stored = collaborators.recordPersistance->fetchRecord(module.moduleName, recordID);
    auto listener = delegate.lock();
    if (listener) listener->record(stored, recordID, module, miscData);
    if (!isTemporaryRecordId(recordID))
        return collaborators.recordFetchNetworkService->fetchRecord({module, recordID, miscData});
    auto currentID = stored ? stored->recordId()
                            : SharedActivities::currentId(*collaborators.recordIdAliases, module.moduleName, recordID);
    if (!isTemporaryRecordId(currentID))
        return collaborators.recordFetchNetworkService->fetchRecord({module, currentID, miscData, recordID});
    // Callers wait for two notices.
    if (listener && stored) return listener->record(stored, recordID, module, miscData);
    if (listener) listener->unableToConvertRecordFromDictionaryError();
}

void RecordsFetchDataManager::parsedRecords(const std::vector<ValueMap>& records, const RecordFetch& fetch) {
    auto& module = fetch.module.moduleName;
    collaborators.recordPersistance->storeRecord(records, module);
    if (auto& beside = collaborators.answersBesideSync) beside->stored(module, fetch.responseTime);
    auto listener = delegate.lock();
    if (!listener) return;
    auto fields = collaborators.fieldLists->getFields(module, std::nullopt);
    auto wire = records.empty() ? std::nullopt : std::optional(records.front());
    auto record = fields ? recordFromNetworkDictionary(wire, *fields) : std::nullopt;
    if (!record)
        listener->unableToConvertRecordFromDictionaryError();
    else if (record->recordId().empty())
        listener->unableToGetIDForRecordError();
    else
        listener->record(record, fetch.formerRecordID.value_or(fetch.recordID), fetch.module, fetch.miscData);
}

void RecordsFetchDataManager::getActivityRecords(RecordQuery query, std::int64_t from, std::int64_t to) {
    using F = GetColumnFilter;
    reportActivities(std::move(query), {{tasks, F::Tasks::betweenDates(from, to)},
                                        {events, F::Events::betweenDates(from, to)},
                                        {calls, F::Calls::betweenDates(from, to)}});
}

void RecordsFetchDataManager::getActivitiesRecords(RecordQuery query, bool fetchOnlyOpen) {
    using F = GetColumnFilter;
    reportActivities(std::move(query), {{tasks, fetchOnlyOpen ? F::Tasks::open() : F::Tasks::closed()},
                                        {events, fetchOnlyOpen ? F::Events::upcoming() : F::Events::past()},
                                        {calls, fetchOnlyOpen ? F::Calls::upcoming() : F::Calls::completed()}});
}

void RecordsFetchDataManager::reportActivities(RecordQuery query, const std::vector<Activity>& activities) {
    query = ordered(std::move(query));
    Records all;
    for (auto& activity : activities) {
        auto records = recordsOf(activity, query);
        if (!records) continue;
        if (!all) all.emplace();
        std::move(records->begin(), records->end(), std::back_inserter(*all));
    }
    if (auto listener = delegate.lock()) listener->activityRecords(all, query);
}

RecordsFetchDataManager::Records RecordsFetchDataManager::recordsOf(const Activity& activity, RecordQuery query) const {
    std::string moduleName(activity.moduleName);
    if (query.module.moduleName == allActivities) {
        if (!query.columnNamesAndValues) query.columnNamesAndValues.emplace();
        query.columnNamesAndValues->set(std::string(FieldIdentifierConstants().Activities.activityType), moduleName);
    } else {
        auto module = collaborators.modulePersistance->getModuleByModuleName(moduleName);
        if (!module) return std::nullopt;
        query.module = *module;
    }
    auto where = FilterToWhereConverter::getWhereStatement(activity.filters);
    if (where) restrict(query, *where);
    return collaborators.recordPersistance->fetchRecords(query);
}

}  // namespace tarvo
