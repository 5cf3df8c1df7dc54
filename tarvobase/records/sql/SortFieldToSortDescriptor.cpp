#include "tarvobase/records/sql/SortFieldToSortDescriptor.h"

#include <algorithm>

#include "kelva_db/Database.h"
#include "platform/Text.h"
#include "tarvobase/metadata/ModuleInfo.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/sql/SqlConditions.h"
#include "tarvobase/utils/LogOnce.h"
#include "tarvobase/value_objects/field/FieldList.h"

namespace tarvo {

namespace {

SortDescriptor getPickListDescriptor(const std::string& column, bool isAscending,
                                     const std::vector<PicklistMetadata>& values) {
    auto [lowest, highest] =
        std::minmax_element(values.begin(), values.end(), [](auto& a, auto& b) { return a.position < b.position; });
    auto unknown = isAscending ? highest->position + 1 : lowest->position - 1;
    auto null = isAscending ? highest->position + 2 : lowest->position - 2;
    std::string direction = isAscending ? "ASC" : "DESC";

    std::vector<std::string> parts{"CASE"};
    for (auto& value : values)
        // The server ignores the case of letters here.
        parts.push_back("WHEN " + column + " = " + kelva::literal(value.fieldActualValue) + " COLLATE NOCASE THEN " +
                        std::to_string(value.position));
    parts.push_back("WHEN " + column + " IS NULL THEN " + std::to_string(null));
    parts.push_back("ELSE " + std::to_string(unknown));
    parts.push_back("END " + direction + ",");
    parts.push_back(column + " " + direction);
    return SortDescriptor::customOrderBy(text::join(parts, " "));
}

SortDescriptor descriptorFor(const SortField& sortField, const FieldMetadata& field, const FieldList& fieldList) {
    if (isLookupField(field.fieldType))
        return SortDescriptor(
            {.colName = kelva::quotedName(getLookupColumn(sortField.column)), .ascending = sortField.isAscending});
    if (isPickListField(field.fieldType)) {
        auto values = fieldList.picklistIdentifierMap().find(sortField.column);
        if (values != fieldList.picklistIdentifierMap().end() && !values->second.empty())
            return getPickListDescriptor(kelva::quotedName(sortField.column), sortField.isAscending, values->second);
    }
    return SortFieldToSortDescriptor::plainDescriptor(sortField, field);
}

}  // namespace

SortDescriptor SortFieldToSortDescriptor::plainDescriptor(const SortField& sortField, const FieldMetadata& field) {
    return tarvo::sortDescriptor({kelva::quotedName(sortField.column), sortField.isAscending}, &field);
}

std::vector<SortDescriptor> SortFieldToSortDescriptor::sortDescriptor(const std::vector<SortField>& sortFields,
                                                                      const FieldList& fieldList) {
    std::vector<SortDescriptor> descriptors;
    for (auto& sortField : sortFields) {
        if (auto field = fieldList.getField(sortField.column))
            descriptors.push_back(descriptorFor(sortField, *field, fieldList));
        else
            logOnce("no field for the sort column " + sortField.column + " of " + fieldList.moduleName());
    }
    return descriptors;
}

std::vector<SortDescriptor> SortFieldToSortDescriptor::sortDescriptor(const std::vector<SortField>& sortFields,
                                                                      const ModuleInfo& moduleInfo) {
    return sortDescriptor(sortFields, moduleInfo.metadata);
}

}  // namespace tarvo
