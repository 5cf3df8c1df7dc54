#pragma once

#include <string>

#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

struct ModuleLayoutInfo;

struct ModuleLayoutInfoConstants : StoredNames<ModuleLayoutInfoConstants, ModuleLayoutInfo> {
    std::string_view TableName = of("ModuleLayoutInfo", "MODULE_LAYOUT_INFO");
    std::string_view ModuleName = of("ModuleName", "module_name");
    std::string_view LayoutID = of("LayoutID", "layout_id");
    std::string_view LayoutName = of("LayoutName", "layout_name");
    std::string_view IsAccessible = of("IsAccessible", "is_accessible");
    std::string_view IsDefault = of("IsDefault", "is_default");
};
struct ModuleLayoutInfoDatabaseConstants : TableTwin<ModuleLayoutInfoConstants> {};

/// The name of one layout of a module.
struct ModuleLayoutInfo {
    std::string moduleName;
    std::string layoutID;
    std::string layoutName;
    bool isAccessible = false;  ///< whether the user's profile may use the layout
    bool isDefault = false;

    static constexpr auto fields() {
        using V = ModuleLayoutInfo;
        using Names = ModuleLayoutInfoConstants;
        return describe(field("moduleName", &V::moduleName, &Names::ModuleName).at(0),
                        field("layoutID", &V::layoutID, &Names::LayoutID).at(1),
                        field("layoutName", &V::layoutName, &Names::LayoutName).at(2),
                        field("isAccessible", &V::isAccessible, &Names::IsAccessible).at(3),
                        field("isDefault", &V::isDefault, &Names::IsDefault).at(4));
    }
    friend bool operator==(const ModuleLayoutInfo&, const ModuleLayoutInfo&) = default;
};

}  // namespace tarvo
