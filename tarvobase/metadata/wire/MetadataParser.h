#pragma once

#include "tarvobase/metadata/wire/ParsedMetadata.h"
#include "tarvobase/network_layer/ParserProtocol.h"

namespace tarvo {

/// Reads a metadata answer. It has one entry per module, whose data is a list of sections by position. An entry that
/// the server refused fails as a whole. In any other entry each section has its own result.
class MetadataParser final : public ParserProtocol<ParsedMetadataDetail, ParsedMetadataInfo> {
public:
    /// Takes the form of the rows from the configuration.
    MetadataParser();

    Result<ParsedMetadataDetail, ParserError> parseResult(const ValueList& sections,
                                                          const ParsedMetadataInfo& info) override;

private:
    const bool hasAdditionalInfo_;
};

}  // namespace tarvo
