#include "host/commands/ListCommand.h"

#include <algorithm>

#include "bridge/forms/RecordForms.h"
#include "host/commands/CommandSteps.h"
#include "host/commands/Console.h"
#include "host/commands/RecordText.h"
#include "platform/Json.h"
#include "platform/Text.h"
#include "tarvobase/list_view/GetCustomViewsDataManager.h"
#include "tarvobase/list_view/GetListFilterRecords.h"
#include "tarvobase/metadata/GetModuleInfoDataManager.h"
#include "tarvobase/records/sql/FilterToWhereConverter.h"
#include "tarvobase/records/sql/RecordInDatabase.h"

namespace tarvo::host {

namespace {

constexpr const char* tokenNeededForList = "--token is required to sign in and fetch what the list needs";
constexpr std::size_t cellWidth = 32;
constexpr std::size_t columnsWithoutView = 6;

/// The arguments, resolved to fields, a view and filters.
struct ListRequest {
    FieldList fields;
    CustomView view;
    std::vector<const FieldMetadata*> shown;
    std::vector<ColumnFilter> filters;
    std::optional<SortField> sort;
};

/// The answer.
struct Page {
    std::vector<Record> records;
    std::optional<bool> moreRecords;  ///< absent for a page that was sorted locally
    std::string source;
    std::optional<std::string> failure;  ///< why the server added nothing
};

Result<CustomView, int> viewOf(const std::vector<CustomView>& views, const Arguments& arguments) {
    if (!arguments.view) {
        if (auto view = GetCustomViewsDataManager::current()->getDefaultCustomView(arguments.module)) return *view;
        return fail(arguments.module + " has no views");
    }
    for (auto name : {&CustomView::viewID, &CustomView::viewDisplayName, &CustomView::viewName})
        for (auto& view : views)
            if (view.*name == *arguments.view) return view;
    return fail(arguments.module + " has no view \"" + *arguments.view + "\"; the command views lists them");
}

/// Returns the fields that the view shows, in its order. A view may name fields that the user has no right to see.
std::vector<const FieldMetadata*> shownFields(const CustomView& view, const FieldList& fields) {
    std::vector<const FieldMetadata*> shown;
    for (auto& name : text::split(view.listFields, ","))
        if (auto field = fieldNamed(fields, name)) shown.push_back(field);
    if (shown.empty())
        for (auto field : fields.allFields())
            if (shown.size() < columnsWithoutView && field->visible) shown.push_back(field);
    return shown;
}

Result<const FieldMetadata*, int> fieldOf(const FieldList& fields, const std::string& name) {
    if (auto field = fieldNamed(fields, name)) return field;
    return fail(fields.moduleName() + " has no field \"" + name + "\"; the command fields lists them");
}

/// Returns whether several values of the filter are alternatives, as for a field that is filled by picking.
bool takesAlternatives(const ColumnFilter& filter, const FieldMetadata& field) {
    auto comparator = std::get_if<StringFilterTypes>(&filter.filterType);
    bool isEquality =
        comparator && (*comparator == StringFilterTypes::isExactly || *comparator == StringFilterTypes::isnt);
    return isEquality && (isPickListField(field.fieldType) || field.fieldType == FieldDataType::multiSelectPicklist);
}

Result<std::vector<const FieldMetadata*>, int> columnsWanted(const Arguments& arguments, const CustomView& view,
                                                             const FieldList& fields) {
    if (arguments.columns.empty()) return shownFields(view, fields);
    std::vector<const FieldMetadata*> wanted;
    for (auto& name : arguments.columns) {
        auto field = fieldOf(fields, name);
        if (!field) return field.error();
        wanted.push_back(*field);
    }
    return wanted;
}

/// Returns one value per input; nullopt if there are more or fewer.
std::optional<ValueList> inputsOf(const ColumnFilter& filter, const FieldMetadata& field, const std::string& values) {
    auto types = filter.filterInputTypes();
    if (types.empty() || values.empty())
        return types.empty() && values.empty() ? std::optional(ValueList()) : std::nullopt;
    auto pieces = text::split(values, ",");
    ValueList list(pieces.begin(), pieces.end());
    if (types.size() > 1) return pieces.size() == types.size() ? std::optional(std::move(list)) : std::nullopt;
    return ValueList{takesAlternatives(filter, field) ? Value(std::move(list)) : Value(values)};
}

/// Reads `FIELD:TYPE:VALUE[,VALUE]`; the values may hold colons.
Result<ColumnFilter, int> filterOf(const FieldList& fields, const std::string& argument) {
    auto pieces = text::split(argument, ":");
    if (pieces.size() < 2) return fail("--filter: FIELD:TYPE:VALUE[,VALUE] is expected, not \"" + argument + "\"", 2);
    auto field = fieldOf(fields, pieces[0]);
    if (!field) return field.error();
    auto offered = GetFilters::getFilters(**field);
    auto filter =
        std::find_if(offered.begin(), offered.end(), [&](auto& one) { return comparatorOf(one) == pieces[1]; });
    if (filter == offered.end())
        return fail("--filter: " + pieces[0] + " offers no \"" + pieces[1] +
                    "\"; the command filters lists what it does");
    auto inputs = inputsOf(*filter, **field, text::join({pieces.begin() + 2, pieces.end()}, ":"));
    if (!inputs)
        return fail("--filter: " + pieces[1] + " takes " + std::to_string(filter->filterInputTypes().size()) +
                        " values, with \",\" between",
                    2);
    filter->setInput(*inputs);
    // Without this, a list would show everything in the place of what was asked for.
    if (!FilterToWhereConverter::getWhereStatement(*filter))
        return fail("--filter: \"" + argument + "\" gives no condition; a value cannot be read", 2);
    return *filter;
}

Result<std::optional<SortField>, int> sortOf(const FieldList& fields, const std::optional<std::string>& order) {
    if (!order) return std::optional<SortField>();
    auto pieces = text::split(*order, ":");
    auto direction = pieces.size() == 2 ? fromRawText<SortOrder>(pieces[1]) : std::optional(SortOrder::ascending);
    if (pieces.size() > 2 || !direction) return fail("--sort: FIELD, FIELD:asc or FIELD:desc is expected", 2);
    auto field = fieldOf(fields, pieces[0]);
    if (!field) return field.error();
    return std::optional(SortField{fields.identifierOf(**field), *direction == SortOrder::ascending});
}

Result<ListRequest, int> requestOf(Host& host, const Arguments& arguments) {
    auto fields = neededFields(host, arguments, tokenNeededForList);
    if (!fields) return fields.error();
    auto views = neededViews(host, arguments, tokenNeededForList);
    if (!views) return views.error();
    auto view = viewOf(*views, arguments);
    if (!view) return view.error();
    auto sort = sortOf(*fields, arguments.sort);
    if (!sort) return sort.error();
    if (*sort && !view->isOfflineSupported)
        return fail("--sort: which records \"" + view->viewDisplayName +
                    "\" has, only the server knows; it comes in the view's own order");
    auto shown = columnsWanted(arguments, *view, *fields);
    if (!shown) return shown.error();
    ListRequest request{*fields, *view, *std::move(shown), {}, *sort};
    for (auto& argument : arguments.filters) {
        auto filter = filterOf(*fields, argument);
        if (!filter) return filter.error();
        request.filters.push_back(*filter);
    }
    return request;
}

std::vector<std::string> columnsOf(const ListRequest& request) {
    std::vector<std::string> columns;
    for (auto field : request.shown) columns.push_back(request.fields.identifierOf(*field));
    return columns;
}

/// The last answer counts. Whether there is a second one is known when the use case has released its callbacks.
struct Answers {
    std::optional<GetListFilterRecords<>::Response> last;
    std::optional<std::string> failure;
};

template <class Error>
std::string textOf(const Error& error) {
    switch (error.reason().value_or(FailureReason::noNetwork)) {
        case FailureReason::notSignedIn:
            return "there is no token to ask the server with";
        case FailureReason::outdated:
            return "another account is at work by now";
        case FailureReason::refused:
            return "the server refused";
        case FailureReason::unusableAnswer:
            return "the server's answer cannot be read";
        case FailureReason::notStored:
            return "the server's records could not be stored";
        case FailureReason::noSuchModule:
            return "there is no such module";
        case FailureReason::noSuchView:
            return "there is no such view";
        case FailureReason::noNetwork:
            break;
    }
    return explanationOf(CommonError::networkResponseError, error.cause());
}

Result<Page, int> ask(const ListRequest& request, const Arguments& arguments) {
    GetListFilterRecordsParams params;
    params.moduleName = arguments.module;
    params.criteriaId = request.view.viewID;
    params.columns = columnsOf(request);
    params.from = arguments.from;
    params.limit = arguments.limit;
    if (!request.filters.empty()) params.filters = request.filters;
    auto answers = awaited<Answers>([&](auto answered) {
        auto usecase = std::make_shared<GetListFilterRecords<>>();
        std::shared_ptr<Answers> all(new Answers, [answered](Answers* answers) {
            answered(std::move(*answers));
            delete answers;
        });
        usecase->execute(GetListFilterRecords<>::Request(params),
                         {.onSuccess = [all](auto& answer) { all->last = answer; },
                          .onError = [all](auto& failure) { all->failure = textOf(failure); },
                          .didComplete = nullptr});
        return usecase;
    });
    if (!answers) return fail("the server did not answer in time");
    if (!answers->last)
        return fail("no record of this page is stored, and " + answers->failure.value_or("the server sent none"));
    Page page{std::move(answers->last->records).value_or(std::vector<Record>()), answers->last->moreRecords,
              std::string(caseName(answers->last->source())), answers->failure};
    return page;
}

/// Lists in the order of `--sort`, judged and sorted on the stored records.
Result<Page, int> askSorted(Host& host, const ListRequest& request, const Arguments& arguments) {
    auto moduleInfo = GetModuleInfoAssembler::getModuleInfoDM()->getModuleInfo(arguments.module);
    if (!moduleInfo) return fail("the module " + arguments.module + " cannot be read");
    ViewRecordQuery query{.customView = request.view, .moduleInfo = *moduleInfo};
    query.columns = columnsOf(request);
    query.filters = request.filters;
    query.sortBy = std::vector{*request.sort};
    query.from = arguments.from;
    query.limit = arguments.limit;
    auto records = RecordInDatabase::make(host.database())->getRecords(query);
    if (!records) return fail("the records could not be read");
    return Page{*std::move(records), std::nullopt, std::string(caseName(ResponseSource::database)), std::nullopt};
}

std::string extentOf(const Page& page, const Arguments& arguments) {
    if (page.records.empty()) return "No records";
    auto last = arguments.from + static_cast<std::int64_t>(page.records.size());
    return "Records " + std::to_string(arguments.from + 1) + " to " + std::to_string(last);
}

std::string forPeople(const Page& page, const ListRequest& request, const Arguments& arguments) {
    std::vector<std::string> heading = {"ID"};
    for (auto field : request.shown) heading.push_back(shortened(field->fieldLabel, cellWidth));
    std::vector<std::vector<std::string>> rows = {heading};
    for (auto& record : page.records) {
        std::vector<std::string> row = {record.recordId()};
        for (auto field : request.shown)
            row.push_back(shortened(readableText(record, *field, request.fields), cellWidth));
        rows.push_back(std::move(row));
    }
    return tableText(rows) + "\n" + extentOf(page, arguments) + " of " + arguments.module + ", \"" +
           request.view.viewDisplayName + "\"" + (request.sort ? ", sorted here" : "") +
           (page.source == caseName(ResponseSource::network) ? ", asked of the server" : ", from the encrypted copy") +
           (page.moreRecords == true ? "; the server has more" : "") + "\n";
}

struct ShownColumn {
    std::string label, apiName, column;
    static constexpr auto fields() {
        return describe(field("label", &ShownColumn::label), field("apiName", &ShownColumn::apiName),
                        field("column", &ShownColumn::column));
    }
};

std::string forPrograms(const Page& page, const ListRequest& request, const Arguments& arguments,
                        const std::string& path) {
    std::vector<ShownColumn> columns;
    for (auto field : request.shown)
        columns.push_back({field->fieldLabel, field->fieldAPIName, request.fields.identifierOf(*field)});
    ValueList texts;
    for (auto& record : page.records) {
        std::vector<std::string> row;
        for (auto field : request.shown) row.push_back(readableText(record, *field, request.fields));
        texts.push_back(bridge::toJson(row));
    }
    ValueMap map{{"module", bridge::toJson(arguments.module)},
                 {"view", ValueMap{{"id", request.view.viewID}, {"name", request.view.viewDisplayName}}},
                 {"columns", bridge::toJson(columns)},
                 {"records", bridge::toJson(page.records)},
                 {"texts", std::move(texts)},
                 {"source", page.source},
                 {"database", bridge::toJson(path)}};
    if (page.moreRecords) map.set("moreRecords", *page.moreRecords);
    return json::write(map).value_or("") + "\n";
}

}  // namespace

int listRecords(Host& host, const Arguments& arguments) {
    auto path = openDatabase(host, arguments);
    if (!path) return path.error();
    if (auto status = findModule(host, arguments, tokenNeededForList)) return *status;
    auto request = requestOf(host, arguments);
    if (!request) return request.error();
    auto page = request->sort ? askSorted(host, *request, arguments) : ask(*request, arguments);
    if (!page) return page.error();
    if (page->failure) note(*page->failure + "; these are the stored records");
    return arguments.json ? printForPrograms(forPrograms(*page, *request, arguments, *path))
                          : printForPeople(forPeople(*page, *request, arguments));
}

}  // namespace tarvo::host
