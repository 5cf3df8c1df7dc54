#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/value_objects/field/Sort.h"
#include "tarvobase/value_objects/field/SortField.h"

namespace tarvo {

class FieldList;
struct FieldMetadata;

/// The interface of a saved list filter: its name, where it applies and how it sorts. It is a base of values, so copies
/// are independent.
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

    /// Sorts by id, newest first, in the naming in force or in that of the fields.
    static SortField defaultSortField();
    static SortField defaultSortField(const FieldList& fieldList);

    /// Returns the direction of its sort. Without a sort it returns nullopt, or the default's direction with
    /// `includeDefault`.
    std::optional<SortOrder> getSortOrder(bool includeDefault) const;
    /// Returns its sort by the identifier of the field, or nullopt if it has no sort or the list lacks the field.
    std::optional<SortField> sortField(const FieldList& fieldList) const;
    /// The same without a list of fields: the column is `sortBy` unchanged.
    std::optional<SortField> sortField() const;
    /// Returns its sort followed by the default one, unless that sorts by the same column.
    std::vector<SortField> sortFieldList(const FieldList& fieldList) const;
    /// Returns the field of its sort. Without a sort it returns null, or the field of the default sort with
    /// `includeDefault`. Returns null if the list lacks the field. The pointer is valid as long as the list.
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
