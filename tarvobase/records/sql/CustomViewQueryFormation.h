#pragma once

#include <string>

#include "platform/Describe.h"
#include "platform/Result.h"

namespace tarvo {

struct CustomView;
class FieldList;

/// The reason why a view cannot be evaluated on the local tables.
struct CustomViewQueryError {
    enum class Case {
        metadataNotFound,    ///< the module has no field of this name
        offlineNotSupported  ///< only the server can evaluate the view
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
    /// Returns the condition of a view on the record table of its module, for a where-clause. It is empty for the view
    /// of all records.
    static Result<std::string, CustomViewQueryError> getWhereCondition(const CustomView& customView,
                                                                       const FieldList& fieldList);
};

}  // namespace tarvo
