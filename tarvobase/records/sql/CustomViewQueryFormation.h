#pragma once

#include <string>

#include "platform/Describe.h"
#include "platform/Result.h"

namespace tarvo {

struct CustomView;
class FieldList;

/// Why a view cannot be answered from the local tables.
struct CustomViewQueryError {
    enum class Case {
        metadataNotFound,    ///< the module has no field of this name
        offlineNotSupported  ///< only the server can judge the view
    };
    Case which = Case::offlineNotSupported;
    std::string fieldAPI;  ///< the field that is missing

    static CustomViewQueryError metadataNotFound(std::string fieldAPI) {
        return {Case::metadataNotFound, std::move(fieldAPI)};
    }
    static CustomViewQueryError offlineNotSupported() { return {}; }

    friend bool operator==(const CustomViewQueryError&, const CustomViewQueryError&) = default;
};

template <>
struct EnumCases<CustomViewQueryError::Case> {
    using C = CustomViewQueryError::Case;
    static constexpr EnumCase<C> cases[] = {{C::metadataNotFound, "metadataNotFound"},
                                            {C::offlineNotSupported, "offlineNotSupported"}};
};

/// Fills the template of a stored view with columns and values.
struct CustomViewQueryFormation {
    /// The condition of a view on the record table of its module, for a where-clause; empty for the view of all
    /// records.
    static Result<std::string, CustomViewQueryError> getWhereCondition(const CustomView& customView,
                                                                       const FieldList& fieldList);
};

}  // namespace tarvo
