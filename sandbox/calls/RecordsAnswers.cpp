#include <algorithm>
#include <variant>

#include "platform/Text.h"
#include "sandbox/Envelope.h"
#include "sandbox/calls/Answers.h"
#include "sandbox/calls/CallParameters.h"
#include "sandbox/data/DataSet.h"
#include "sandbox/data/ViewFilter.h"

namespace tarvo::sandbox::calls {
namespace {

constexpr std::size_t defaultPage = 200;
constexpr std::size_t longestPage = 10'000;
constexpr std::size_t typicalRecordBytes = 2'000;

/// Describes a page of a list, with everything that is needed to write it without the server's lock.
struct Page {
    const ModuleData* module;
    /// Nullopt for all records of the module.
    std::optional<ViewData> view;
    RecordSort sort;
    std::size_t from = 0;
    std::size_t limit = longestPage;
};

/// Holds one entry of an answer: a failure, which is made at once, or a page, which is written later.
using Entry = std::variant<Value, Page>;

Value failed(const Call& call, const std::string& module, std::string_view code, std::string_view message) {
    return envelope::failedEntry(module, code, message, call.now);
}

Value unknownModule(const Call& call, const std::string& module) {
    return failed(call, module, "INVALID_MODULE", "There is no such module.");
}

/// Writes pages without the server's lock, all of them from the records of one moment.
class PageWriter {
public:
    PageWriter(DataSet& data, const std::string& account, std::int64_t now)
        : data_(data), records_(data.records->now()), account_(account), now_(now) {}

    std::string write(const std::vector<Entry>& entries) const {
        envelope::Writer writer(now_);
        for (const auto& entry : entries)
            if (const auto* page = std::get_if<Page>(&entry))
                add(*page, writer);
            else
                writer.add(std::get<Value>(entry));
        return writer.finish();
    }

private:
    void add(const Page& page, envelope::Writer& writer) const {
        auto list = records_.list(page.module->name);
        auto positions = order(page, list);
        auto from = std::min(page.from, positions->size());
        auto until = from + std::min(page.limit, positions->size() - from);
        ValueMap about{{"count", until - from}, {"more_records", until < positions->size()}};
        writer.add(page.module->name, from == until, about, [&](std::string& json) {
            RecordValue scratch;
            json.reserve(json.size() + (until - from) * typicalRecordBytes);
            json += '[';
            for (auto i = from; i < until; ++i) {
                if (i > from) json += ',';
                list.at((*positions)[i])->write(json, scratch);
            }
            json += ']';
        });
    }

    // The result of criteria also depends on the user who asks and on the day.
    RecordOrders::Positions order(const Page& page, const RecordList& list) const {
        const auto& module = page.module->name;
        if (!page.view || page.view->criteria.isNull())
            return data_.recordOrders.order(list, module, "", nullptr, page.sort);
        constexpr std::int64_t millisecondsOfHour = 3'600'000;
        auto filterId = page.view->id + " " + account_ + " " + std::to_string(now_ / millisecondsOfHour);
        ViewFilter filter(data_, *page.view, account_, now_);
        return data_.recordOrders.order(
            list, module, filterId, [&](const RecordData& record) { return filter.holds(record); }, page.sort);
    }

    DataSet& data_;
    /// The records as they are when the call is handled, whatever is changed until the page is written.
    RecordView records_;
    std::string account_;
    std::int64_t now_;
};

Reply written(const Call& call, std::vector<Entry> entries) {
    PageWriter writer(call.data, call.account, call.now);
    return Reply::writtenBy([writer, entries = std::move(entries)] { return writer.write(entries); });
}

// Accepts either name of a field. An unknown name leaves the order to the ids.
RecordSort sortBy(const Call& call, const ModuleData& module, const std::string& name, bool isAscending) {
    for (const auto& field : call.data.metadata.find(module.name)->second.fields)
        if (field.apiName == name || field.column == name) return {field.isKey ? nullptr : &field, isAscending};
    return {};
}

Entry pageOfView(const Call& call, const std::string& moduleName, const std::string& viewId) {
    const auto* module = call.data.module(moduleName);
    if (!module || !module->hasOwnLists) return unknownModule(call, moduleName);
    if (const auto* view = viewOf(call, *module, viewId))
        return Page{module, *view, sortBy(call, *module, view->sortBy, view->isAscending)};
    return failed(call, module->name, "INVALID_CUSTOM_VIEW", "The module has no such view.");
}

/// Reads a whole number that is not negative; false for any other text.
bool readCount(const Call& call, std::string_view name, std::size_t& into) {
    auto given = parameter(call, name);
    if (given.empty()) return true;
    auto number = text::toInteger(given);
    if (!number || *number < 0) return false;
    into = static_cast<std::size_t>(*number);
    return true;
}

// "count" is how many records the client holds, "mcount" how many more it wants; 0 leaves that to the server.
Entry limited(const Call& call, Page page) {
    page.limit = 0;
    if (!readCount(call, "count", page.from) || !readCount(call, "mcount", page.limit))
        return failed(call, page.module->name, "INVALID_DATA", "\"count\" and \"mcount\" are whole numbers.");
    page.limit = page.limit == 0 ? defaultPage : std::min(page.limit, longestPage);
    return page;
}

Entry pageOfList(const Call& call) {
    auto entry = pageOfView(call, parameter(call, "module"), parameter(call, "cvid"));
    auto* page = std::get_if<Page>(&entry);
    if (!page) return entry;
    auto column = parameter(call, "sort_by");
    if (!column.empty()) page->sort = sortBy(call, *page->module, column, parameter(call, "sort_order") == "asc");
    return limited(call, std::move(*page));
}

}  // namespace

Reply viewRecords(const Call& call) {
    // A client asks for later changes from the time of its page.
    call.data.sync.nameTime(call.now);
    auto modules = listIn(parameter(call, "module"));
    if (!modules) return written(call, {pageOfList(call)});
    auto views = listIn(parameter(call, "cvid")).value_or(std::vector<std::string>());
    views.resize(modules->size());
    std::vector<Entry> entries;
    for (std::size_t i = 0; i < modules->size(); ++i) entries.push_back(pageOfView(call, (*modules)[i], views[i]));
    return written(call, std::move(entries));
}

Reply moduleRecords(const Call& call) {
    const auto* module = moduleOf(call);
    if (!module) return written(call, {unknownModule(call, parameter(call, "module"))});
    return written(call, {limited(call, Page{module})});
}

Reply singleRecord(const Call& call) {
    const auto* module = moduleOf(call);
    if (!module) return Reply::of(envelope::answer({unknownModule(call, parameter(call, "module"))}, call.now));
    auto id = parameter(call, "id");
    ValueList rows;
    auto list = call.data.records->now().list(module->name);
    if (auto record = list.find(id)) rows.push_back(record->wireForm());
    return Reply::of(envelope::answer(
        {envelope::entry(module->name, std::move(rows), call.now, ValueMap{{"recordId", id}})}, call.now));
}

}  // namespace tarvo::sandbox::calls
