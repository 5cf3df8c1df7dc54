#include "tarvobase/init_process/parsers/PermissionsParser.h"

#include "tarvobase/network_layer/PositionalRow.h"

namespace tarvo {

namespace {

std::optional<ModulePermission> permissionOf(const PositionalRow& row) {
    auto texts = row.leadingTexts(4);
    if (!texts) return std::nullopt;
    return ModulePermission{texts->at(0), texts->at(1), texts->at(2), texts->at(3) == "true"};
}

}  // namespace

Result<std::vector<ModulePermission>, ParserError> PermissionsParser::parseResult(const ValueList& rows,
                                                                                  const ParsedPermissionInfo& info) {
    if (info.nodata.value_or(false)) return ParserError(ParserError::Case::noData);
    auto permissions = readUsableRows(rows, permissionOf);
    if (permissions.empty()) return ParserError(ParserError::Case::noData);
    return permissions;
}

}  // namespace tarvo
