#pragma once

#include <string>

#include "platform/Value.h"
#include "tarvobase/configuration/FieldIdentifier.h"
#include "tarvobase/value_objects/FieldDataType.h"

namespace tarvo {

/// A column of a module.
struct FieldMetadata {
    std::string fieldID;
    std::string fieldAPIName;
    std::string moduleName;
    std::string columnCRMName;
    std::string fieldLabel;
    FieldDataType fieldType = FieldDataType::none;
    int maxLength = 0;
    bool isReadOnly = false;
    bool isCustomField = false;
    bool isUnique = false;
    bool isQuickCreate = false;
    bool isPrimaryKey = false;
    bool isMproxyMetadata = false;
    std::string lookupModule;
    std::string relatedListID;
    bool visible = false;
    std::string mode;
    ValueMap displayPrefs;

    /// The member by which the running system knows fields.
    const std::string& fieldIdentifier() const;
};

/// Plain keys of a field, and in the twin below its columns.
struct FieldMetadataConstants {
    std::string_view TableName = "ModuleSpecificMetadata";
    std::string_view FieldAPIName = "FieldAPIName";
    std::string_view ColumnCRMName = "ColumnCRMName";
};

struct FieldMetadataDatabaseConstants : FieldMetadataConstants {
    constexpr FieldMetadataDatabaseConstants() {
        TableName = "MODULE_SPECIFIC_METADATA";
        FieldAPIName = "field_api_name";
        ColumnCRMName = "crm_col_name";
    }
};

}  // namespace tarvo
