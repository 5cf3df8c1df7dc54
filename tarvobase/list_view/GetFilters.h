#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tarvobase/utils/OrderedDictionary.h"
#include "tarvobase/value_objects/field/FieldMetadata.h"
#include "tarvobase/value_objects/field/MetadataInfoContract.h"
#include "tarvobase/value_objects/view/ColumnFilter.h"

namespace tarvo {

/// Lists the filters that a column of a list offers, in display order. The list is empty for a field that cannot be
/// filtered. Fields of layouts are fields too. Columns are named by the naming in force. May be called from any thread.
class GetFilters {
public:
    using Filters = std::vector<ColumnFilter>;
    /// Keyed by the identifier of the field.
    using FiltersByColumn = OrderedDictionary<std::string, Filters>;

    static Filters getFilters(const Metadata& column);
    static FiltersByColumn getFilters(const std::vector<const Metadata*>& columns);
    /// Columns are identifiers. A column without a field has no filters.
    static Filters getFilters(const std::string& column, const MetadataInfoContract& metadata);
    static FiltersByColumn getFilters(const std::vector<std::string>& columns, const MetadataInfoContract& metadata);
};

/// Makes the filter of a known comparator with its name and its inputs, whether the column offers it or not.
struct GetColumnFilter {
    static ColumnFilter getFilter(const FilterType& filterType, const Metadata& column);
    static ColumnFilter getFilter(const FilterType& filterType, std::string column);

    /// Filters over activities, as of the moment of the call and in the naming in force. A record must pass all filters
    /// of a list.
    using Filters = std::vector<ColumnFilter>;

    /// Tasks are judged by their status and by the day when they are due.
    struct Tasks {
        static Filters open();
        static Filters closed();
        static Filters overdue();  ///< open, and due before today
        /// Moments are seconds since 1970. The first is included, the second is not. The others do the same.
        static Filters betweenDates(std::int64_t from, std::int64_t to);
    };
    /// An event is upcoming until it has ended, so each event is either upcoming or past.
    struct Events {
        static Filters upcoming();
        static Filters past();
        static Filters betweenDates(std::int64_t from, std::int64_t to);  ///< by its start
    };
    /// A call that is not completed is scheduled until its time and overdue from then on. Both kinds are upcoming, so
    /// that a call whose time has passed stays on the list of work to be done.
    struct Calls {
        static Filters scheduled();
        static Filters overdue();
        static Filters upcoming();
        static Filters completed();
        static Filters betweenDates(std::int64_t from, std::int64_t to);
    };
};

}  // namespace tarvo
