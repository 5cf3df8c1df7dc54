#include "platform/Clock.h"
#include "platform/Dates.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/list_view/GetFilters.h"
#include "tarvobase/value_objects/IdentifierConstants.h"

namespace tarvo {

namespace {

using Filters = GetColumnFilter::Filters;

const IdentifierConstants& names() { return *CommonConfigration::sharedInstance().fieldIdentifier.get().constant; }

ColumnFilter with(const FilterType& type, std::string_view column, const ValueList& inputs) {
    auto filter = GetColumnFilter::getFilter(type, std::string(column));
    filter.setInput(inputs);
    return filter;
}

/// A moment in the form that the inputs of dates have.
Value moment(std::int64_t secondsSince1970) {
    static const auto formatter = DateFormatter::pattern("yyyy-MM-dd HH:mm:ss Z", {.locale = "en_US_POSIX"});
    return formatter.string(secondsSince1970).value_or("");
}
Value now() { return moment(platform::Clock::secondsSince1970()); }

ColumnFilter between(std::string_view column, std::int64_t from, std::int64_t to) {
    return with(DateTimeFilterTypes::between, column, {moment(from), moment(to)});
}
ColumnFilter isCompleted(std::string_view column) { return with(StringFilterTypes::isExactly, column, {"Completed"}); }
ColumnFilter isNotCompleted(std::string_view column) { return with(StringFilterTypes::isnt, column, {"Completed"}); }

}  // namespace

Filters GetColumnFilter::Tasks::open() { return {isNotCompleted(names().Tasks.status)}; }
Filters GetColumnFilter::Tasks::closed() { return {isCompleted(names().Tasks.status)}; }
Filters GetColumnFilter::Tasks::overdue() {
    return {isNotCompleted(names().Tasks.status), with(DateFilterTypes::before, names().Tasks.dueDate, {now()})};
}
Filters GetColumnFilter::Tasks::betweenDates(std::int64_t from, std::int64_t to) {
    return {between(names().Tasks.dueDate, from, to)};
}

Filters GetColumnFilter::Events::upcoming() {
    return {with(DateTimeFilterTypes::after, names().Events.endDateTime, {now()})};
}
Filters GetColumnFilter::Events::past() {
    return {with(DateTimeFilterTypes::before, names().Events.endDateTime, {now()})};
}
Filters GetColumnFilter::Events::betweenDates(std::int64_t from, std::int64_t to) {
    return {between(names().Events.startDateTime, from, to)};
}

Filters GetColumnFilter::Calls::scheduled() {
    return {isNotCompleted(names().Calls.status),
            with(DateTimeFilterTypes::after, names().Calls.callStartTime, {now()})};
}
Filters GetColumnFilter::Calls::overdue() {
    return {isNotCompleted(names().Calls.status),
            with(DateTimeFilterTypes::before, names().Calls.callStartTime, {now()})};
}
Filters GetColumnFilter::Calls::upcoming() { return {isNotCompleted(names().Calls.status)}; }
Filters GetColumnFilter::Calls::completed() { return {isCompleted(names().Calls.status)}; }
Filters GetColumnFilter::Calls::betweenDates(std::int64_t from, std::int64_t to) {
    return {between(names().Calls.callStartTime, from, to)};
}

}  // namespace tarvo
