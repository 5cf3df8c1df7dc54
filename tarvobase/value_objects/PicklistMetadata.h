#pragma once

#include <string>

#include "platform/Result.h"
#include "tarvobase/value_objects/StoredNames.h"

namespace tarvo {

struct PicklistMetadata;

/// Reading fails with the key of the value that a record stores when it is absent.
struct PicklistMetadataConstants
    : StoredNames<PicklistMetadataConstants, PicklistMetadata, Result<PicklistMetadata, std::string>> {
    std::string_view TableName = of("PicklistMetadata", "PICKLIST_METADATA");
    std::string_view FieldActualValue = of("FieldActualValue", "field_actual_value");
    std::string_view FieldOptionalValue = of("FieldOptionalValue", "field_display_value");
    std::string_view FieldID = of("FieldID", "field_id");
    std::string_view FieldAPIName = of("FieldAPIName", "field_api_name");
    std::string_view CrmColumnName = of("CRMColumnName", "crm_col_name");
    std::string_view ModuleName = of("ModuleName", "module_name");
    std::string_view LayoutID = of("LayoutID", "layout_id");
    std::string_view FieldMap = of("FieldMap", "field_map");
    std::string_view Position = of("Position", "position");
};
struct PicklistMetadataDatabseConstants : TableTwin<PicklistMetadataConstants> {};

/// One allowed value of a picklist.
struct PicklistMetadata {
    std::string fieldActualValue;    ///< the value that a record stores
    std::string fieldOptionalValue;  ///< the label
    std::string fieldID;
    std::string fieldAPIName;
    std::string crmColumnName;
    std::string moduleName;
    std::string layoutID;
    std::string fieldMap;
    int position = 0;

    static constexpr auto fields() {
        using V = PicklistMetadata;
        using Names = PicklistMetadataConstants;
        return describe(
            field("fieldActualValue", &V::fieldActualValue, &Names::FieldActualValue).required(),
            field("fieldOptionalValue", &V::fieldOptionalValue, &Names::FieldOptionalValue),
            field("fieldID", &V::fieldID, &Names::FieldID),
            field("fieldAPIName", &V::fieldAPIName, &Names::FieldAPIName),
            field("crmColumnName", &V::crmColumnName, &Names::CrmColumnName),
            field("moduleName", &V::moduleName, &Names::ModuleName), field("layoutID", &V::layoutID, &Names::LayoutID),
            field("fieldMap", &V::fieldMap, &Names::FieldMap), field("position", &V::position, &Names::Position));
    }
    friend bool operator==(const PicklistMetadata&, const PicklistMetadata&) = default;
};

}  // namespace tarvo
