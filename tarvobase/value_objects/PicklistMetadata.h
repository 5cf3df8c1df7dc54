#pragma once

#include <string>

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
};

}  // namespace tarvo
