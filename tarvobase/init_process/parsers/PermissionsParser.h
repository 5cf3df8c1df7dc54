#pragma once

#include <vector>

#include "tarvobase/metadata/wire/ParsedMetadata.h"
#include "tarvobase/network_layer/ParserProtocol.h"
#include "tarvobase/value_objects/module/ModulePermission.h"

namespace tarvo {

/// Parses the permissions of a profile. Leaves out a row that is too short or contains anything but texts. Fails with
/// `noData` if no row is left, or if the server says that there are none.
class PermissionsParser final : public ParserProtocol<std::vector<ModulePermission>, ParsedPermissionInfo> {
public:
    Result<std::vector<ModulePermission>, ParserError> parseResult(const ValueList& rows,
                                                                   const ParsedPermissionInfo& info) override;
};

}  // namespace tarvo
