#include "tarvobase/value_objects/view/FilterProtocol.h"

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/value_objects/field/FieldList.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

constexpr std::string_view none = "null";

SortField newestFirst(const FieldIdentifier& naming) { return {std::string(naming.constant->id), false}; }

}  // namespace

SortField FilterProtocol::defaultSortField() { return newestFirst(namingInForce()); }
SortField FilterProtocol::defaultSortField(const FieldList& fieldList) { return newestFirst(fieldList.naming()); }

std::optional<SortOrder> FilterProtocol::getSortOrder(bool includeDefault) const {
    auto order = fromRawText<SortOrder>(sortOrder);
    if (!order && includeDefault) return SortOrder::descending;
    return order;
}

std::optional<SortField> FilterProtocol::sortField() const {
    if (sortBy.empty() || sortBy == none) return std::nullopt;
    return SortField{sortBy, isAscending()};
}

std::optional<SortField> FilterProtocol::sortField(const FieldList& fieldList) const {
    auto field = sortMetadata(fieldList);
    if (!field) return std::nullopt;
    return SortField{fieldList.identifierOf(*field), isAscending()};
}

std::vector<SortField> FilterProtocol::sortFieldList(const FieldList& fieldList) const {
    auto fallback = defaultSortField(fieldList);
    auto own = sortField(fieldList);
    if (!own) return {fallback};
    // A second term on the same column has no effect, whatever its direction.
    if (own->column == fallback.column) return {*own};
    return {*own, fallback};
}

const FieldMetadata* FilterProtocol::sortColumnMetadata(const FieldList& fieldList, bool includeDefault) const {
    auto field = sortMetadata(fieldList);
    if (field || !includeDefault) return field;
    return fieldList.getField(defaultSortField(fieldList).column);
}

const FieldMetadata* FilterProtocol::sortMetadata(const FieldList& fieldList) const {
    if (sortBy.empty() || sortBy == none) return nullptr;
    // The server refers to fields by API name; a sort that the user chose in this application is stored by identifier.
    auto field = fieldList.getFieldByApiName(sortBy);
    return field ? field : fieldList.getField(sortBy);
}

}  // namespace tarvo
