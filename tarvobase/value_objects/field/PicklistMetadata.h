#pragma once

#include <string>

#include "platform/Result.h"
#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

struct PicklistMetadata;

/// Reading fails with the key of `fieldActualValue` if that value is absent.
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
        return describe(field("fieldActualValue", &V::fieldActualValue, &Names::FieldActualValue).required().at(0),
                        field("fieldOptionalValue", &V::fieldOptionalValue, &Names::FieldOptionalValue).at(1),
                        field("fieldID", &V::fieldID, &Names::FieldID).at(2),
                        field("fieldAPIName", &V::fieldAPIName, &Names::FieldAPIName).at(3),
                        field("crmColumnName", &V::crmColumnName, &Names::CrmColumnName).at(4),
                        field("moduleName", &V::moduleName, &Names::ModuleName).at(5),
                        field("layoutID", &V::layoutID, &Names::LayoutID).at(6),
                        field("fieldMap", &V::fieldMap, &Names::FieldMap).at(7),
                        field("position", &V::position, &Names::Position).at(8));
    }
    friend bool operator==(const PicklistMetadata&, const PicklistMetadata&) = default;
};

}  // namespace tarvo
