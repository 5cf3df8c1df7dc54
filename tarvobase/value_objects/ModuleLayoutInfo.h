#pragma once

#include <string>

#include "tarvobase/usecase/Describe.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

/// The name of one layout of a module.
struct ModuleLayoutInfo {
    std::string moduleName;
    std::string layoutID;
    std::string layoutName;
    bool isAccessible = false;  ///< whether the user's profile may use the layout
    bool isDefault = false;

    static constexpr auto fields() {
        return describe(
            field("moduleName", &ModuleLayoutInfo::moduleName), field("layoutID", &ModuleLayoutInfo::layoutID),
            field("layoutName", &ModuleLayoutInfo::layoutName), field("isAccessible", &ModuleLayoutInfo::isAccessible),
            field("isDefault", &ModuleLayoutInfo::isDefault));
    }
    friend bool operator==(const ModuleLayoutInfo&, const ModuleLayoutInfo&) = default;
};

struct ModuleLayoutInfoConstants {
    std::string_view TableName = "ModuleLayoutInfo";
    std::string_view ModuleName = "ModuleName";
    std::string_view LayoutID = "LayoutID";
    std::string_view LayoutName = "LayoutName";
    std::string_view IsAccessible = "IsAccessible";
    std::string_view IsDefault = "IsDefault";

    ValueMap getDictionary(const ModuleLayoutInfo& layout) const;
    ModuleLayoutInfo getValue(const ValueMap& map) const;
};

struct ModuleLayoutInfoDatabaseConstants : ModuleLayoutInfoConstants {
    constexpr ModuleLayoutInfoDatabaseConstants() {
        TableName = "MODULE_LAYOUT_INFO";
        ModuleName = "module_name";
        LayoutID = "layout_id";
        LayoutName = "layout_name";
        IsAccessible = "is_accessible";
        IsDefault = "is_default";
    }
    ValueMap getDictionary(const ModuleLayoutInfo& layout) const;
    ModuleLayoutInfo getValue(const Row& row) const;
};

}  // namespace tarvo
