#pragma once

#include <string>

#include "tarvobase/value_objects/FieldMetadata.h"

namespace tarvo {

/// The stored form of one field in one layout.
struct LayoutFieldData {
    std::string layoutID;
    std::string fieldID;
    std::string fieldAPIName;
    std::string crmColumnName;
    std::string moduleName;
};

/// A field in a layout, joined with what is known of the field.
struct LayoutMetadata : FieldMetadata {
    std::string layoutID;
};

}  // namespace tarvo
