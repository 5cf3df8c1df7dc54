#include "host/serve/HostRecordCalls.h"

#include "bridge/forms/RecordForms.h"
#include "platform/Json.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/configuration/Scope.h"
#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/metadata/GetModuleInfoDataManager.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/records/wire/ModuleParser.h"
#include "tarvobase/records/wire/RecordConversion.h"
#include "tarvobase/records/wire/WireRecords.h"

namespace tarvo::host {

namespace {

using bridge::CallPtr;
using bridge::JsonRecord;
using Dictionaries = std::vector<ValueMap>;
using Names = std::vector<std::string>;

struct NewRequest {
    static constexpr auto fields() { return describe(); }
};
struct ParseRequest {
    std::string moduleName;
    ValueList data;  // records in the server's form
    static constexpr auto fields() {
        return describe(field("moduleName", &ParseRequest::moduleName), field("data", &ParseRequest::data));
    }
};
struct RecordRequest {
    JsonRecord record;
    static constexpr auto fields() { return describe(field("record", &RecordRequest::record)); }
};
struct UpdateRequest {
    JsonRecord record;
    std::string recordID;
    static constexpr auto fields() {
        return describe(field("record", &UpdateRequest::record), field("recordID", &UpdateRequest::recordID));
    }
};
/// Stores wire dictionaries, or a page in the server's form.
struct StoreRequest {
    std::string moduleName;
    std::optional<Dictionaries> dictionaries;
    std::optional<ValueList> data;
    static constexpr auto fields() {
        return describe(field("moduleName", &StoreRequest::moduleName),
                        field("dictionaries", &StoreRequest::dictionaries), field("data", &StoreRequest::data));
    }
};
/// Stores wire dictionaries, or records.
struct ModifyRequest {
    std::string moduleName;
    std::optional<Dictionaries> dictionaries;
    std::optional<std::vector<JsonRecord>> records;
    static constexpr auto fields() {
        return describe(field("moduleName", &ModifyRequest::moduleName),
                        field("dictionaries", &ModifyRequest::dictionaries), field("records", &ModifyRequest::records));
    }
};
struct FetchRequest {
    std::string moduleName;
    std::string recordID;
    std::optional<Names> columnsToFetch;
    static constexpr auto fields() {
        return describe(field("moduleName", &FetchRequest::moduleName), field("recordID", &FetchRequest::recordID),
                        field("columnsToFetch", &FetchRequest::columnsToFetch));
    }
};
/// Fetches by ids, or by the values of columns.
struct FetchSomeRequest {
    std::string moduleName;
    std::optional<Names> recordIds;
    std::optional<ValueMap> columnNamesAndValues;
    std::optional<Names> columnsToFetch;
    static constexpr auto fields() {
        return describe(field("moduleName", &FetchSomeRequest::moduleName),
                        field("recordIds", &FetchSomeRequest::recordIds),
                        field("columnNamesAndValues", &FetchSomeRequest::columnNamesAndValues),
                        field("columnsToFetch", &FetchSomeRequest::columnsToFetch));
    }
};
/// A `ViewRecordQuery` that names what the host reads from the database.
struct ViewListRequest {
    std::string moduleName;
    std::string cvId;
    std::optional<Names> columns;
    std::optional<std::vector<ColumnFilter>> filters;
    std::optional<std::vector<SortField>> sortBy;
    std::optional<std::int64_t> from, limit;
    static constexpr auto fields() {
        return describe(field("moduleName", &ViewListRequest::moduleName), field("cvId", &ViewListRequest::cvId),
                        field("columns", &ViewListRequest::columns), field("filters", &ViewListRequest::filters),
                        field("sortBy", &ViewListRequest::sortBy), field("from", &ViewListRequest::from),
                        field("limit", &ViewListRequest::limit));
    }
};
struct DeleteRequest {
    std::string moduleName;
    std::optional<Names> recordIds;
    std::optional<std::string> where;  // a condition in SQL
    static constexpr auto fields() {
        return describe(field("moduleName", &DeleteRequest::moduleName), field("recordIds", &DeleteRequest::recordIds),
                        field("where", &DeleteRequest::where));
    }
};

using Store = RecordPersistanceDelegate;

void finish(const CallPtr& call) { call->done(); }
void finish(const CallPtr& call, ValueMap response) { call->done("response", std::move(response)); }

/// Ends the call with a member, which is left out if the value is absent.
template <class T>
void answer(const CallPtr& call, std::string name, const std::optional<T>& value) {
    ValueMap response;
    if (value) response.set(std::move(name), bridge::toJson(*value));
    finish(call, std::move(response));
}

/// Returns whether exactly one of two members is there; refuses the call otherwise.
template <class A, class B>
bool isOneOf(const std::optional<A>& a, const std::optional<B>& b, std::string_view names, const CallPtr& call) {
    if (a.has_value() != b.has_value()) return true;
    call->refuse("request: either " + std::string(names) + " is needed");
    return false;
}

std::optional<FieldList> fieldsOf(const std::string& module) {
    auto database = Scope::current().databaseAdapter;
    auto fields = FieldListAssembler::getFieldListDM(database)->getFields(module, std::nullopt);
    return fields ? std::optional(*std::move(fields)) : std::nullopt;
}

void finishWrite(bool isStored, const CallPtr& call) {
    isStored ? finish(call) : call->refuse("not everything was stored; the log says why");
}

/// Parses records in the server's form as a page of an answer is parsed.
std::optional<WireRecords> pageOf(const ValueList& data) {
    auto text = json::write(data);
    auto document = text ? json::Document::parse(platform::Data(*text)) : std::nullopt;
    if (!document) return std::nullopt;
    auto list = document->root();
    return WireRecords{*std::move(document), list};
}

void parse(const ParseRequest& request, Store&, const CallPtr& call) {
    auto dictionaries = ModuleParser::parseRecord(request.data, request.moduleName).records;
    ValueMap response{{"dictionaries", bridge::toJson(dictionaries)}};
    if (auto fields = fieldsOf(request.moduleName)) {
        RecordConversion conversion(*fields);
        ValueList records;
        for (auto& dictionary : dictionaries) records.push_back(bridge::toJson(conversion.toRecord(dictionary)));
        response.set("records", std::move(records));
    }
    finish(call, std::move(response));
}

void wire(const RecordRequest& request, Store&, const CallPtr& call) {
    auto fields = fieldsOf(request.record.moduleName);
    if (!fields) return call->refuse("no metadata of " + request.record.moduleName + " is stored");
    finish(call, {{"dictionary", bridge::toJson(convertRecordToNetworkDictionary(request.record.record(), *fields))}});
}

void store(const StoreRequest& request, Store& store, const CallPtr& call) {
    if (!isOneOf(request.dictionaries, request.data, "dictionaries or data", call)) return;
    if (request.dictionaries) {
        return finishWrite(store.storeRecord(*request.dictionaries, request.moduleName), call);
    }
    auto page = pageOf(*request.data);
    if (!page) return call->refuse("request.data: cannot be written as JSON");
    auto stored = store.storePage(*page, request.moduleName);
    stored ? finish(call, {{"recordIds", bridge::toJson(*stored)}}) : finishWrite(false, call);
}

void modify(const ModifyRequest& request, Store& store, const CallPtr& call) {
    if (!isOneOf(request.dictionaries, request.records, "dictionaries or records", call)) return;
    if (request.dictionaries) return finishWrite(store.modifyRecord(request.moduleName, *request.dictionaries), call);
    std::vector<Record> records;
    for (auto& form : *request.records) records.push_back(form.record());
    finishWrite(store.modifyRecord(request.moduleName, records), call);
}

void fetch(const FetchRequest& request, Store& store, const CallPtr& call) {
    auto& [module, id, columns] = request;
    answer(call, "record", columns ? store.fetchRecordsFor(module, id, *columns) : store.fetchRecord(module, id));
}

void fetchSome(const FetchSomeRequest& request, Store& store, const CallPtr& call) {
    auto& [module, ids, values, columns] = request;
    if (!isOneOf(ids, values, "recordIds or columnNamesAndValues", call)) return;
    answer(call, "records",
           ids ? store.fetchRecords(module, *ids, columns) : store.fetchRecords(module, *values, columns));
}

void fetchList(bridge::JsonRecordQuery query, Store& store, const CallPtr& call) {
    if (auto missing = query.complete()) return call->refuse(*missing);
    answer(call, "records", store.fetchRecords(query));
}

void count(bridge::JsonRecordQuery query, Store& store, const CallPtr& call) {
    if (auto missing = query.complete()) return call->refuse(*missing);
    answer(call, "count", store.countRecords(query));
}

/// Calls `use(query)` with the view and the module's info from the database.
template <class Use>
void withView(const ViewListRequest& request, const CallPtr& call, Use use) {
    bridge::JsonRecordQuery named;
    named.moduleName = request.moduleName;
    named.cvId = request.cvId;
    if (auto missing = named.complete()) return call->refuse(*missing);
    auto info = GetModuleInfoAssembler::getModuleInfoDM()->getModuleInfo(request.moduleName);
    if (!info) return call->refuse("no metadata of " + request.moduleName + " is stored");
    use(ViewRecordQuery{.customView = *named.customView,
                        .moduleInfo = *info,
                        .columns = request.columns,
                        .filters = request.filters,
                        .sortBy = request.sortBy,
                        .from = request.from,
                        .limit = request.limit});
}

void getRecords(const ViewListRequest& request, Store& store, const CallPtr& call) {
    withView(request, call, [&](const ViewRecordQuery& query) { answer(call, "records", store.getRecords(query)); });
}

void countRecords(const ViewListRequest& request, Store& store, const CallPtr& call) {
    withView(request, call, [&](const ViewRecordQuery& query) { answer(call, "count", store.countRecords(query)); });
}

void remove(const DeleteRequest& request, Store& store, const CallPtr& call) {
    if (!isOneOf(request.recordIds, request.where, "recordIds or where", call)) return;
    finishWrite(request.recordIds ? store.deleteRecords(*request.recordIds, request.moduleName)
                                  : store.deleteRecords(request.moduleName, Criteria::custom(*request.where)),
                call);
}

}  // namespace

void addRecordCalls(bridge::Registry& registry, Host& host) {
    registry.addOperation<NewRequest>("host.record.new", [](NewRequest, const CallPtr& call) {
        auto generator = CommonConfigration::sharedInstance().recordIDGenerator.get();
        finish(call, {{"recordId", bridge::toJson(generator->getNewRecordId())}});
    });
    // Runs on the main queue like every start of a call, so that later lines read what it wrote.
    auto add = [&]<class Request>(std::string name, void (*work)(Request, Store&, const CallPtr&)) {
        registry.addOperation<std::remove_cvref_t<Request>>(
            "host.record." + name, [&host, work](const auto& request, const CallPtr& call) {
                if (!host.database()) return call->refuse("no database is open");
                work(request, *RecordInDatabase::make(host.database()), call);
            });
    };
    add("parse", parse);
    add("wire", wire);
    add("store", store);
    add.operator()<const RecordRequest&>(
        "storeRecord", [](const RecordRequest& request, Store& store, const CallPtr& call) {
            finishWrite(store.storeRecord(request.record.record(), request.record.moduleName), call);
        });
    add.operator()<const UpdateRequest&>("update", [](const UpdateRequest& request, Store& store, const CallPtr& call) {
        finishWrite(store.updateRecord(request.record.record(), request.recordID, request.record.moduleName), call);
    });
    add("modify", modify);
    add("fetch", fetch);
    add("fetchSome", fetchSome);
    add("fetchList", fetchList);
    add("count", count);
    add("getRecords", getRecords);
    add("countRecords", countRecords);
    add("delete", remove);
}

}  // namespace tarvo::host
