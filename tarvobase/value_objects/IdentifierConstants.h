#pragma once

#include <string_view>

namespace tarvo {

/// The fields that the logic knows by heart, in one of the two namings.
struct IdentifierConstants {
    std::string_view rowID;
    std::string_view id;
    std::string_view recordId;
    std::string_view fullName;
    std::string_view modifiedTime;
};

/// By CRM column name, and by API name. One list of (member, column, API name) serves both.
extern const IdentifierConstants CRMColumnConstant;
extern const IdentifierConstants FieldAPIConstant;

/// The names of the naming in force. An operation asks once, at its start.
const IdentifierConstants& FieldIdentifierConstants();

}  // namespace tarvo
