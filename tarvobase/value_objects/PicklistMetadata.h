#pragma once

#include <string>

#include "tarvobase/usecase/Describe.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

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
        using P = PicklistMetadata;
        return describe(field("fieldActualValue", &P::fieldActualValue),
                        field("fieldOptionalValue", &P::fieldOptionalValue), field("fieldID", &P::fieldID),
                        field("fieldAPIName", &P::fieldAPIName), field("crmColumnName", &P::crmColumnName),
                        field("moduleName", &P::moduleName), field("layoutID", &P::layoutID),
                        field("fieldMap", &P::fieldMap), field("position", &P::position));
    }
    friend bool operator==(const PicklistMetadata&, const PicklistMetadata&) = default;
};

struct PicklistMetadataConstants {
    std::string_view TableName = "PicklistMetadata";
    std::string_view FieldActualValue = "FieldActualValue";
    std::string_view FieldOptionalValue = "FieldOptionalValue";
    std::string_view FieldID = "FieldID";
    std::string_view FieldAPIName = "FieldAPIName";
    std::string_view CrmColumnName = "CRMColumnName";
    std::string_view ModuleName = "ModuleName";
    std::string_view LayoutID = "LayoutID";
    std::string_view FieldMap = "FieldMap";
    std::string_view Position = "Position";

    ValueMap getDictionary(const PicklistMetadata& picklist) const;
    /// Fails with the key of what a row cannot do without: its value and the names of its field.
    Result<PicklistMetadata, std::string> getValue(const ValueMap& map) const;
};

struct PicklistMetadataDatabseConstants : PicklistMetadataConstants {
    constexpr PicklistMetadataDatabseConstants() {
        TableName = "PICKLIST_METADATA";
        FieldActualValue = "field_actual_value";
        FieldOptionalValue = "field_display_value";
        FieldID = "field_id";
        FieldAPIName = "field_api_name";
        CrmColumnName = "crm_col_name";
        ModuleName = "module_name";
        LayoutID = "layout_id";
        FieldMap = "field_map";
        Position = "position";
    }
    ValueMap getDictionary(const PicklistMetadata& picklist) const;
    Result<PicklistMetadata, std::string> getValue(const Row& row) const;
};

}  // namespace tarvo
