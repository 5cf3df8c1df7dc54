#pragma once

#include "tarvobase/metadata/wire/ParsedMetadata.h"
#include "tarvobase/network_layer/ParserProtocol.h"

namespace tarvo {

/// Reads a metadata answer: an entry a module, its data a list of sections by position. An entry that is refused fails
/// as a whole; of an entry that came, each section has its own result.
class MetadataParser final : public ParserProtocol<ParsedMetadataDetail, ParsedMetadataInfo> {
public:
    Result<ParsedMetadataDetail, ParserError> parseResult(const ValueList& sections,
                                                          const ParsedMetadataInfo& info) override;
};

}  // namespace tarvo
