#pragma once

#include <vector>

#include "tarvobase/metadata/wire/ParsedMetadata.h"
#include "tarvobase/network_layer/ParserProtocol.h"
#include "tarvobase/value_objects/module/ModulePermission.h"

namespace tarvo {

/// Reads what a profile may do. A row that is too short or no texts is left out; when none is left, or the server says
/// that there are none, the answer is `noData`.
class PermissionsParser final : public ParserProtocol<std::vector<ModulePermission>, ParsedPermissionInfo> {
public:
    Result<std::vector<ModulePermission>, ParserError> parseResult(const ValueList& rows,
                                                                   const ParsedPermissionInfo& info) override;
};

}  // namespace tarvo
