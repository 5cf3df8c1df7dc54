#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/usecase/DataSource.h"
#include "tarvobase/value_objects/view/ColumnFilter.h"

namespace tarvo {

/// Which page of which view to show.
struct GetListFilterRecordsParams : BaseRequest {
    DataSource source() const override { return requestedSource; }

    std::string moduleName;
    std::string criteriaId;                           ///< id of the custom view
    std::optional<std::vector<std::string>> columns;  ///< identifiers; absent for all columns of the module
    bool shouldGroup = false;
    std::optional<std::int64_t> from;   ///< rows of the view to skip; absent for none
    std::optional<std::int64_t> limit;  ///< rows of the page; absent for all stored rows
    std::optional<std::vector<ColumnFilter>> filters;
    DataSource requestedSource = DataSource::both;

    static constexpr auto fields() {
        using Params = GetListFilterRecordsParams;
        return describe(field("moduleName", &Params::moduleName), field("criteriaId", &Params::criteriaId),
                        field("columns", &Params::columns), optionalField("shouldGroup", &Params::shouldGroup),
                        field("from", &Params::from), field("limit", &Params::limit),
                        field("filters", &Params::filters), optionalField("source", &Params::requestedSource));
    }
};

}  // namespace tarvo
