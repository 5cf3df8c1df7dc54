#pragma once

#include <string>
#include <string_view>

namespace tarvo {

struct FieldMetadata;
struct LayoutMetadata;
struct LayoutFieldData;
struct PicklistMetadata;
struct FieldMetadataConstants;
struct IdentifierConstants;

/// The stable key by which a running system finds a field, a layout row and a picklist value: either the CRM column
/// name or the API name. An operation takes one copy at its start, so that a switch while it runs never mixes two.
struct FieldIdentifier {
    std::string FieldMetadata::*fieldIdentifierPath;
    std::string LayoutMetadata::*layoutIdentifierPath;
    std::string PicklistMetadata::*picklistIdentifierPath;
    std::string_view FieldMetadataConstants::*fieldConstantIdentifierKP;
    std::string LayoutFieldData::*layoutFieldDataIdentifierKP;
    /// The names of well-known fields. They live as long as the process.
    const IdentifierConstants* constant;

    static const FieldIdentifier& crmColumnNameIdentifier();
    static const FieldIdentifier& fieldAPINameIdentifier();

    friend bool operator==(const FieldIdentifier& a, const FieldIdentifier& b) { return a.constant == b.constant; }
};

}  // namespace tarvo
