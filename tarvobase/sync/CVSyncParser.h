#pragma once

#include <vector>

#include "tarvobase/metadata/wire/ParsedMetadata.h"
#include "tarvobase/network_layer/ParserProtocol.h"
#include "tarvobase/value_objects/view/CustomView.h"

namespace tarvo {

/// Reads an answer with views: an entry a module, its data a list of positional rows. A row that cannot be read, or
/// whose criteria cannot be compiled, costs itself and is logged by the view's name; its siblings stay. A view whose
/// criteria only the server can judge stays, as one that needs the server.
class CVSyncParser final : public ParserProtocol<std::vector<CustomView>, ParsedPermissionInfo> {
public:
    Result<std::vector<CustomView>, ParserError> parseResult(const ValueList& rows,
                                                             const ParsedPermissionInfo& info) override;
};

}  // namespace tarvo
