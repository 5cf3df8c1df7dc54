#include "tarvobase/metadata/wire/MetadataParser.h"

#include "tarvobase/configuration/Variant.h"
#include "tarvobase/metadata/wire/MetadataSections.h"

namespace tarvo {

namespace {

using SectionReader = void (*)(const Value& section, const SectionContext& context, ParsedMetadata& into);

template <auto Member, auto read>
void readInto(const Value& section, const SectionContext& context, ParsedMetadata& into) {
    into.*Member = read(section, context);
}

/// The readers of the sections by position. The section without a reader is for older clients; further sections are for
/// newer ones.
constexpr SectionReader readers[] = {
    readInto<&ParsedMetadata::relatedList, metadata_sections::relatedLists>,
    readInto<&ParsedMetadata::layouts, metadata_sections::layouts>,
    readInto<&ParsedMetadata::layoutFields, metadata_sections::layoutFields>,
    readInto<&ParsedMetadata::pickList, metadata_sections::picklists>,
    readInto<&ParsedMetadata::relatedListFields, metadata_sections::relatedListFields>,
    readInto<&ParsedMetadata::fields, metadata_sections::fields>,
    readInto<&ParsedMetadata::dependentModuleFields, metadata_sections::fields>,
    nullptr,
    readInto<&ParsedMetadata::relatedSort, metadata_sections::relatedSort>,
};

}  // namespace

MetadataParser::MetadataParser() : hasAdditionalInfo_(variant::hasMoreLayoutColumns()) {}

Result<ParsedMetadataDetail, ParserError> MetadataParser::parseResult(const ValueList& sections,
                                                                      const ParsedMetadataInfo& info) {
    SectionContext context{info.moduleName, hasAdditionalInfo_};
    ParsedMetadata metadata;
    for (std::size_t i = 0; i < std::min(sections.size(), std::size(readers)); ++i)
        if (readers[i]) readers[i](sections[i], context, metadata);
    return ParsedMetadataDetail{std::move(metadata), info};
}

}  // namespace tarvo
