#include "platform/Clock.h"
#include "platform/dates/Dates.h"
#include "tarvobase/list_view/GetFilters.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

using Filters = GetColumnFilter::Filters;

ColumnFilter with(const FilterType& type, std::string_view column, const ValueList& inputs) {
    auto filter = GetColumnFilter::getFilter(type, std::string(column));
    filter.setInput(inputs);
    return filter;
}

/// Formats a moment as the inputs of date filters are formatted.
Value momentInput(std::int64_t secondsSince1970) {
    static const auto formatter = DateFormatter::pattern("yyyy-MM-dd HH:mm:ss Z", {.locale = "en_US_POSIX"});
    return formatter.string(secondsSince1970).value_or("");
}
Value now() { return momentInput(platform::Clock::secondsSince1970()); }

ColumnFilter between(std::string_view column, std::int64_t from, std::int64_t to) {
    return with(DateTimeFilterTypes::between, column, {momentInput(from), momentInput(to)});
}
ColumnFilter isCompleted(std::string_view column) { return with(StringFilterTypes::isExactly, column, {"Completed"}); }
ColumnFilter isNotCompleted(std::string_view column) { return with(StringFilterTypes::isnt, column, {"Completed"}); }

}  // namespace

Filters GetColumnFilter::Tasks::open() { return {isNotCompleted(FieldIdentifierConstants().Tasks.status)}; }
Filters GetColumnFilter::Tasks::closed() { return {isCompleted(FieldIdentifierConstants().Tasks.status)}; }
Filters GetColumnFilter::Tasks::overdue() {
    return {isNotCompleted(FieldIdentifierConstants().Tasks.status),
            with(DateFilterTypes::before, FieldIdentifierConstants().Tasks.dueDate, {now()})};
}
Filters GetColumnFilter::Tasks::betweenDates(std::int64_t from, std::int64_t to) {
    return {between(FieldIdentifierConstants().Tasks.dueDate, from, to)};
}

Filters GetColumnFilter::Events::upcoming() {
    return {with(DateTimeFilterTypes::after, FieldIdentifierConstants().Events.endDateTime, {now()})};
}
Filters GetColumnFilter::Events::past() {
    return {with(DateTimeFilterTypes::before, FieldIdentifierConstants().Events.endDateTime, {now()})};
}
Filters GetColumnFilter::Events::betweenDates(std::int64_t from, std::int64_t to) {
    return {between(FieldIdentifierConstants().Events.startDateTime, from, to)};
}

Filters GetColumnFilter::Calls::scheduled() {
    return {isNotCompleted(FieldIdentifierConstants().Calls.status),
            with(DateTimeFilterTypes::after, FieldIdentifierConstants().Calls.callStartTime, {now()})};
}
Filters GetColumnFilter::Calls::overdue() {
    return {isNotCompleted(FieldIdentifierConstants().Calls.status),
            with(DateTimeFilterTypes::before, FieldIdentifierConstants().Calls.callStartTime, {now()})};
}
Filters GetColumnFilter::Calls::upcoming() { return {isNotCompleted(FieldIdentifierConstants().Calls.status)}; }
Filters GetColumnFilter::Calls::completed() { return {isCompleted(FieldIdentifierConstants().Calls.status)}; }
Filters GetColumnFilter::Calls::betweenDates(std::int64_t from, std::int64_t to) {
    return {between(FieldIdentifierConstants().Calls.callStartTime, from, to)};
}

}  // namespace tarvo
