#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tarvobase/utils/OrderedDictionary.h"
#include "tarvobase/value_objects/field/FieldMetadata.h"
#include "tarvobase/value_objects/field/MetadataInfoContract.h"
#include "tarvobase/value_objects/view/ColumnFilter.h"

namespace tarvo {

/// The filters that a column of a list offers, in the order offered; none for a field that cannot be filtered. Fields
/// of layouts are fields too. Columns go by the naming in force. From any thread.
class GetFilters {
public:
    using Filters = std::vector<ColumnFilter>;
    /// By the identifier of the field.
    using FiltersByColumn = OrderedDictionary<std::string, Filters>;

    static Filters getFilters(const Metadata& column);
    static FiltersByColumn getFilters(const std::vector<const Metadata*>& columns);
    /// By identifier; a column without a field has no filters.
    static Filters getFilters(const std::string& column, const MetadataInfoContract& metadata);
    static FiltersByColumn getFilters(const std::vector<std::string>& columns, const MetadataInfoContract& metadata);
};

/// One filter of a known comparator, with its name and its inputs, whether the column offers it or not.
struct GetColumnFilter {
    static ColumnFilter getFilter(const FilterType& filterType, const Metadata& column);
    static ColumnFilter getFilter(const FilterType& filterType, std::string column);

    /// Filters over activities, as of the moment of the call and in the naming in force. All of a list must hold.
    using Filters = std::vector<ColumnFilter>;

    /// By the status and the day when they are due.
    struct Tasks {
        static Filters open();
        static Filters closed();
        static Filters overdue();  ///< open, and due before today
        /// From the first moment on, before the second, in seconds since 1970; so for the others.
        static Filters betweenDates(std::int64_t from, std::int64_t to);
    };
    /// An event is upcoming until it has ended, so that each is either upcoming or past.
    struct Events {
        static Filters upcoming();
        static Filters past();
        static Filters betweenDates(std::int64_t from, std::int64_t to);  ///< by its start
    };
    /// A call that is not completed is scheduled until its time and overdue from then on; upcoming are both, so that a
    /// call whose time has passed is not lost from the lists of what is to be done.
    struct Calls {
        static Filters scheduled();
        static Filters overdue();
        static Filters upcoming();
        static Filters completed();
        static Filters betweenDates(std::int64_t from, std::int64_t to);
    };
};

}  // namespace tarvo
