#pragma once

#include <vector>

#include "tarvobase/metadata/wire/ParsedMetadata.h"
#include "tarvobase/network_layer/ParserProtocol.h"
#include "tarvobase/value_objects/view/CustomView.h"

namespace tarvo {

/// Parses an answer with views: one entry per module, whose data are a list of positional rows. A row that cannot be
/// read, or whose criteria cannot be compiled, is left out and logged with the view's name; the other rows stay. A view
/// whose criteria only the server can evaluate stays and is marked as one that needs the server.
class CVSyncParser final : public ParserProtocol<std::vector<CustomView>, ParsedPermissionInfo> {
public:
    Result<std::vector<CustomView>, ParserError> parseResult(const ValueList& rows,
                                                             const ParsedPermissionInfo& info) override;
};

}  // namespace tarvo
