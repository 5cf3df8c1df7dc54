#pragma once

#include <string>

#include "tarvobase/metadata/wire/ParsedMetadata.h"

/// Readers of the sections of a metadata answer, one per section. A section that is not a list fails with
/// `typeConversionFailed`, a row with too few columns with `lessNumberOfKeys`, and a column of another type with
/// `typeConversionFailedForIndex`.
namespace tarvo {

/// Facts that a reader needs and the rows do not contain.
struct SectionContext {
    const std::string& moduleName;
    /// Whether rows of layout fields have the two additional columns.
    bool hasAdditionalInfo = false;
};

namespace metadata_sections {

using RelatedListSection = ParsedMetadata::Section<std::vector<RelatedList>>;
using LayoutSection = ParsedMetadata::Section<std::vector<ModuleLayoutInfo>>;
using SettingsSection = ParsedMetadata::Section<std::vector<Settings>>;
template <class T>
using RowSection = ParsedMetadata::Section<ParsedMetadata::RowResults<T>>;

/// One bad row fails the section, here and in the layouts, because half a list would pass for a whole one.
RelatedListSection relatedLists(const Value& section, const SectionContext& context);
/// Rows have exactly five columns. A module always has a layout, so an empty section means that it was cut off.
LayoutSection layouts(const Value& section, const SectionContext& context);
RowSection<LayoutFieldData> layoutFields(const Value& section, const SectionContext& context);
RowSection<PicklistMetadata> picklists(const Value& section, const SectionContext& context);
/// Reads the columns of the card, then the columns of a row in a related list.
SettingsSection relatedListFields(const Value& section, const SectionContext& context);
/// A type that this version does not know is `FieldDataType::unknown`; the field stays.
RowSection<FieldMetadata> fields(const Value& section, const SectionContext& context);
/// A section without a column and an order means the order of last modification.
SettingsSection relatedSort(const Value& section, const SectionContext& context);

}  // namespace metadata_sections
}  // namespace tarvo
