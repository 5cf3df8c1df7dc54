#include <algorithm>

#include "sandbox/Envelope.h"
#include "sandbox/calls/Answers.h"
#include "sandbox/calls/CallParameters.h"
#include "sandbox/data/DataSet.h"
#include "sandbox/data/ViewTemplate.h"

namespace tarvo::sandbox::calls {
namespace {

// Headings have ids, like the views themselves.
std::string sectionId(const std::string& section) { return section == "All" ? "1" : section == "Shared" ? "2" : "3"; }

ValueList columnsOf(const ViewData& view, const Call& call) {
    ValueList names;
    const auto& fields = call.data.metadata.find(view.module)->second.fields;
    for (const auto& field : fields)
        if (std::ranges::find(view.columns, field.apiName) != view.columns.end())
            names.push_back(call.naming == Naming::column ? field.column : field.apiName);
    return names;
}

// Clients find the fields of criteria and of the sort by their API names, however they name their columns.
Value viewRow(const ViewData& view, const Call& call) {
    auto criteria = criteriaFor(call.data, view, call.account);
    auto made = viewTemplate(criteria);
    bool isSorted = !view.sortBy.empty();
    return ValueList{view.id,
                     view.name,
                     view.displayName,
                     sectionId(view.section),
                     view.section,
                     view.isDefault ? "true" : "false",
                     view.isOffline ? "true" : "false",
                     made.text,
                     Value(made.pieces),
                     columnsOf(view, call),
                     isSorted ? view.sortBy : "null",
                     !isSorted          ? "null"
                     : view.isAscending ? "asc"
                                        : "desc",
                     std::move(criteria)};
}

Value viewsOf(const std::string& name, const Call& call) {
    const auto* module = call.data.module(name);
    if (!module) return envelope::failedEntry(name, "INVALID_MODULE", "There is no such module.", call.now);
    ValueList rows;
    for (const auto& view : call.data.views)
        if (isViewOf(view, module->name)) rows.push_back(viewRow(view, call));
    return envelope::entry(module->name, std::move(rows), call.now);
}

}  // namespace

Reply views(const Call& call) {
    auto names = namesIn(call.request.parameter("module").value_or(""));
    if (names.empty()) names = namesIn(call.request.parameter("moduleAPI").value_or(""));
    ValueList entries;
    for (const auto& name : names) entries.push_back(viewsOf(name, call));
    return Reply::of(envelope::answer(std::move(entries), call.now));
}

}  // namespace tarvo::sandbox::calls
