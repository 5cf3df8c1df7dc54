#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/value_objects/field/Sort.h"
#include "tarvobase/value_objects/field/SortField.h"

namespace tarvo {

class FieldList;
struct FieldMetadata;

/// The face of a saved list filter towards the code of lists: what it is called, where it applies, how it sorts. Base
/// of values: copies are independent.
struct FilterProtocol {
    virtual ~FilterProtocol() = default;

    std::string moduleName;
    std::string sortBy;     ///< API name of a field; "null" for none
    std::string sortOrder;  ///< raw text of a `SortOrder`; any other text for none
    bool isOfflineSupported = false;

    virtual const std::string& filterId() const = 0;
    virtual void setFilterId(std::string id) = 0;
    virtual const std::string& filterName() const = 0;
    virtual void setFilterName(std::string name) = 0;

    /// Newest first, by id, in the naming in force or in that of the fields.
    static SortField defaultSortField();
    static SortField defaultSortField(const FieldList& fieldList);

    /// The direction of its sort; nothing without one, or with `includeDefault` that of the default field.
    std::optional<SortOrder> getSortOrder(bool includeDefault) const;
    /// Its sort by the identifier of the field. Nothing without a sort, or when the list has no such field.
    std::optional<SortField> sortField(const FieldList& fieldList) const;
    /// The same where no fields are at hand: the column is `sortBy` as it stands.
    std::optional<SortField> sortField() const;
    /// Its sort and behind it the default one, which is left out as a repetition.
    std::vector<SortField> sortFieldList(const FieldList& fieldList) const;
    /// The field of its sort, or with `includeDefault` that of the default one when it has none; null when there is no
    /// such field. Valid as long as the list.
    const FieldMetadata* sortColumnMetadata(const FieldList& fieldList, bool includeDefault) const;

protected:
    FilterProtocol() = default;
    FilterProtocol(const FilterProtocol&) = default;
    FilterProtocol(FilterProtocol&&) = default;
    FilterProtocol& operator=(const FilterProtocol&) = default;
    FilterProtocol& operator=(FilterProtocol&&) = default;
    friend bool operator==(const FilterProtocol&, const FilterProtocol&) = default;

private:
    bool isAscending() const { return getSortOrder(true) == SortOrder::ascending; }
    const FieldMetadata* sortMetadata(const FieldList& fieldList) const;
};

}  // namespace tarvo
