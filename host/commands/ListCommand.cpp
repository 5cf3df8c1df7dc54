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
#include "tarvobase/records/sql/RecordInDatabase.h"

namespace tarvo::host {

namespace {

constexpr const char* tokenNeededForList = "--token is required to sign in and fetch what the list needs";
constexpr std::size_t cellWidth = 32;
constexpr std::size_t columnsWithoutView = 6;

/// What the arguments ask for, in the words of the library.
struct Question {
    FieldList fields;
    CustomView view;
    std::vector<const FieldMetadata*> shown;
    std::vector<ColumnFilter> filters;
    std::optional<SortField> sort;
};

/// What came of it.
struct Page {
    std::vector<Record> records;
    std::optional<bool> moreRecords;  ///< absent for a page that was sorted here
    std::string source;
    bool isServerAway = false;
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

/// The fields that the view shows, in its order. A view may name fields that the user has no right to see.
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

/// Whether several values of the filter are alternatives: those of a field that is filled by picking.
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

/// One value an input; nothing when there are more or fewer.
std::optional<ValueList> inputsOf(const ColumnFilter& filter, const FieldMetadata& field, const std::string& values) {
    auto types = filter.filterInputTypes();
    if (types.empty() || values.empty())
        return types.empty() && values.empty() ? std::optional(ValueList()) : std::nullopt;
    auto pieces = text::split(values, ",");
    ValueList list(pieces.begin(), pieces.end());
    if (types.size() > 1) return pieces.size() == types.size() ? std::optional(std::move(list)) : std::nullopt;
    return ValueList{takesAlternatives(filter, field) ? Value(std::move(list)) : Value(values)};
}

/// `FIELD:TYPE:VALUE[,VALUE]`; the values may hold colons.
Result<ColumnFilter, int> filterOf(const FieldList& fields, const std::string& told) {
    auto pieces = text::split(told, ":");
    if (pieces.size() < 2) return fail("--filter: FIELD:TYPE:VALUE[,VALUE] is expected, not \"" + told + "\"", 2);
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
    return *filter;
}

Result<std::optional<SortField>, int> sortOf(const FieldList& fields, const std::optional<std::string>& told) {
    if (!told) return std::optional<SortField>();
    auto pieces = text::split(*told, ":");
    auto order = pieces.size() == 2 ? fromRawText<SortOrder>(pieces[1]) : std::optional(SortOrder::ascending);
    if (pieces.size() > 2 || !order) return fail("--sort: FIELD, FIELD:asc or FIELD:desc is expected", 2);
    auto field = fieldOf(fields, pieces[0]);
    if (!field) return field.error();
    return std::optional(SortField{fields.identifierOf(**field), *order == SortOrder::ascending});
}

Result<Question, int> questionOf(Host& host, const Arguments& arguments) {
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
                    "\" has the server alone can tell; it comes in the view's own order");
    auto shown = columnsWanted(arguments, *view, *fields);
    if (!shown) return shown.error();
    Question question{*fields, *view, *std::move(shown), {}, *sort};
    for (auto& told : arguments.filters) {
        auto filter = filterOf(*fields, told);
        if (!filter) return filter.error();
        question.filters.push_back(*filter);
    }
    return question;
}

std::vector<std::string> columnsOf(const Question& question) {
    std::vector<std::string> columns;
    for (auto field : question.shown) columns.push_back(question.fields.identifierOf(*field));
    return columns;
}

/// The last answer is the one that counts; whether there is a second one shows when nobody can answer any more.
struct Answers {
    std::optional<GetListFilterRecords<>::Response> last;
    bool hasFailed = false;
};

Result<Page, int> ask(const Question& question, const Arguments& arguments) {
    GetListFilterRecordsParams params;
    params.moduleName = arguments.module;
    params.criteriaId = question.view.viewID;
    params.columns = columnsOf(question);
    params.from = arguments.from;
    params.limit = arguments.limit;
    if (!question.filters.empty()) params.filters = question.filters;
    auto answers = awaited<Answers>([&](auto answered) {
        auto usecase = std::make_shared<GetListFilterRecords<>>();
        std::shared_ptr<Answers> all(new Answers, [answered](Answers* answers) {
            answered(std::move(*answers));
            delete answers;
        });
        usecase->execute(GetListFilterRecords<>::Request(params),
                         {.onSuccess = [all](auto& answer) { all->last = answer; },
                          .onError = [all](auto&) { all->hasFailed = true; },
                          .didComplete = nullptr});
        return usecase;
    });
    if (!answers) return fail("the server did not answer in time");
    if (!answers->last) return fail("no record of this page is stored, and the server did not tell any");
    Page page{std::move(answers->last->records).value_or(std::vector<Record>()), answers->last->moreRecords,
              std::string(caseName(answers->last->source())), answers->hasFailed};
    return page;
}

/// In an order of the caller's: judged and sorted on the stored records.
Result<Page, int> askSorted(Host& host, const Question& question, const Arguments& arguments) {
    auto moduleInfo = GetModuleInfoAssembler::getModuleInfoDM()->getModuleInfo(arguments.module);
    if (!moduleInfo) return fail("the module " + arguments.module + " cannot be read");
    ViewRecordQuery query{.customView = question.view, .moduleInfo = *moduleInfo};
    query.columns = columnsOf(question);
    query.filters = question.filters;
    query.sortBy = std::vector{*question.sort};
    query.from = arguments.from;
    query.limit = arguments.limit;
    auto records = RecordInDatabase::make(host.database())->getRecords(query);
    if (!records) return fail("the records could not be read");
    return Page{*std::move(records), std::nullopt, std::string(caseName(ResponseSource::database)), false};
}

std::string extentOf(const Page& page, const Arguments& arguments) {
    if (page.records.empty()) return "No records";
    auto last = arguments.from + static_cast<std::int64_t>(page.records.size());
    return "Records " + std::to_string(arguments.from + 1) + " to " + std::to_string(last);
}

std::string forPeople(const Page& page, const Question& question, const Arguments& arguments) {
    std::vector<std::string> heading = {"ID"};
    for (auto field : question.shown) heading.push_back(shortened(field->fieldLabel, cellWidth));
    std::vector<std::vector<std::string>> rows = {heading};
    for (auto& record : page.records) {
        std::vector<std::string> row = {record.recordId()};
        for (auto field : question.shown)
            row.push_back(shortened(readableText(record, *field, question.fields), cellWidth));
        rows.push_back(std::move(row));
    }
    return tableText(rows) + "\n" + extentOf(page, arguments) + " of " + arguments.module + ", \"" +
           question.view.viewDisplayName + "\"" + (question.sort ? ", sorted here" : "") +
           (page.source == caseName(ResponseSource::network) ? ", asked of the server" : ", from the encrypted copy") +
           (page.moreRecords == true ? "; the server has more" : "") + "\n";
}

struct ColumnTold {
    std::string label, apiName, column;
    static constexpr auto fields() {
        return describe(field("label", &ColumnTold::label), field("apiName", &ColumnTold::apiName),
                        field("column", &ColumnTold::column));
    }
};

std::string forPrograms(const Page& page, const Question& question, const Arguments& arguments,
                        const std::string& path) {
    std::vector<ColumnTold> columns;
    for (auto field : question.shown)
        columns.push_back({field->fieldLabel, field->fieldAPIName, question.fields.identifierOf(*field)});
    ValueList texts;
    for (auto& record : page.records) {
        std::vector<std::string> row;
        for (auto field : question.shown) row.push_back(readableText(record, *field, question.fields));
        texts.push_back(bridge::toJson(row));
    }
    ValueMap map{{"module", bridge::toJson(arguments.module)},
                 {"view", ValueMap{{"id", question.view.viewID}, {"name", question.view.viewDisplayName}}},
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
    auto question = questionOf(host, arguments);
    if (!question) return question.error();
    auto page = question->sort ? askSorted(host, *question, arguments) : ask(*question, arguments);
    if (!page) return page.error();
    if (page->isServerAway) note("the server did not answer; these are the stored records");
    return print(arguments.json ? forPrograms(*page, *question, arguments, *path)
                                : forPeople(*page, *question, arguments));
}

}  // namespace tarvo::host
