#include "tarvobase/value_objects/FieldColumnName.h"

#include "tarvobase/value_objects/FieldMetadata.h"
#include "tarvobase/value_objects/LayoutMetadata.h"

namespace tarvo {

namespace {

struct SortColumn {
    std::string_view name;
    bool isNumeric = false;
};

SortColumn sortColumn(FieldColumnName column) {
    static constexpr FieldMetadataDatabaseConstants names;
    switch (column) {
        case FieldColumnName::FieldID:
            return {names.FieldID};
        case FieldColumnName::FieldAPIName:
            return {names.FieldAPIName};
        case FieldColumnName::ModuleName:
            return {names.ModuleName};
        case FieldColumnName::ColumnCRMName:
            return {names.ColumnCRMName};
        case FieldColumnName::FieldLabel:
            return {names.FieldLabel};
        case FieldColumnName::FieldType:
            return {names.FieldType};
        case FieldColumnName::MaxLength:
            return {names.MaxLength, true};
        case FieldColumnName::IsReadOnly:
            return {names.IsReadOnly};
        case FieldColumnName::IsCustomField:
            return {names.IsCustomField};
        case FieldColumnName::IsUnique:
            return {names.IsUnique};
        case FieldColumnName::IsQuickCreate:
            return {names.IsQuickCreate};
        case FieldColumnName::IsPrimaryKey:
            return {names.IsPrimaryKey};
        case FieldColumnName::IsMproxyMetadata:
            return {names.IsMproxyMetadata};
        case FieldColumnName::LookupModule:
            return {names.LookupModule};
        case FieldColumnName::RelatedListID:
            return {names.RelatedListID};
        case FieldColumnName::Visible:
            return {names.Visible};
        case FieldColumnName::Mode:
            return {names.Mode};
        case FieldColumnName::DisplayPrefs:
            break;
    }
    return {names.DisplayPrefs};
}

SortColumn sortColumn(LayoutFieldColumnName column) {
    static constexpr LayoutMetadataDatabaseConstants names;
    switch (column) {
        case LayoutFieldColumnName::layoutID:
            return {names.LayoutID};
        case LayoutFieldColumnName::sectionSequence:
            return {names.SectionSequence, true};
        case LayoutFieldColumnName::fieldPosition:
            break;
    }
    return {names.FieldPosition, true};
}

template <class Column>
SortDescriptor descriptorOf(const Sort<Column>& sort) {
    auto column = sortColumn(sort.column);
    return SortDescriptor({.colName = std::string(column.name),
                           .ascending = sort.order == SortOrder::ascending,
                           .numeric = column.isNumeric});
}

template <class Column>
std::vector<SortDescriptor> descriptorsOf(const std::vector<Sort<Column>>& sorts) {
    std::vector<SortDescriptor> descriptors;
    for (auto& sort : sorts) descriptors.push_back(descriptorOf(sort));
    return descriptors;
}

}  // namespace

SortDescriptor sortDescriptor(const FieldSort& sort) { return descriptorOf(sort); }
SortDescriptor sortDescriptor(const LayoutSort& sort) { return descriptorOf(sort); }
std::vector<SortDescriptor> sortDescriptors(const std::vector<FieldSort>& sorts) { return descriptorsOf(sorts); }
std::vector<SortDescriptor> sortDescriptors(const std::vector<LayoutSort>& sorts) { return descriptorsOf(sorts); }

}  // namespace tarvo
