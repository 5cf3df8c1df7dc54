#include "tarvobase/init_process/PermissionsParser.h"

#include "tarvobase/init_process/FirstEntry.h"

namespace tarvo {

Result<std::vector<ModulePermission>, ParserError> PermissionsParser::parseResult(const ValueList& rows,
                                                                                  const ParsedPermissionInfo& info) {
    std::vector<ModulePermission> permissions;
    if (!info.nodata.value_or(false))
        for (auto& row : rows)
            if (auto texts = leadingTexts(row, 4))
                permissions.push_back({texts->at(0), texts->at(1), texts->at(2), texts->at(3) == "true"});
    if (permissions.empty()) return ParserError(ParserError::Case::noData);
    return permissions;
}

}  // namespace tarvo
