#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tarvobase/value_objects/FieldList.h"
#include "tarvobase/value_objects/FieldMetadata.h"
#include "tarvobase/value_objects/Module.h"

namespace tarvo {

struct User;

/// The stored form of one field in one layout.
struct LayoutFieldData {
    std::string layoutID;
    std::string fieldID;
    std::string fieldAPIName;
    std::string crmColumnName;
    std::string moduleName;
    std::string sectionName;  ///< the section's key
    std::string sectionDV;    ///< the section's label
    bool isSubformSection = false;
    int sectionSequence = 0;
    bool mandatory = false;
    std::string defaultValue;
    int fieldPosition = 0;  ///< place in the section
    std::optional<ValueMap> additionalInfo;

    static constexpr auto fields() {
        using L = LayoutFieldData;
        return describe(field("layoutID", &L::layoutID), field("fieldID", &L::fieldID),
                        field("fieldAPIName", &L::fieldAPIName), field("crmColumnName", &L::crmColumnName),
                        field("moduleName", &L::moduleName), field("sectionName", &L::sectionName),
                        field("sectionDV", &L::sectionDV), field("isSubformSection", &L::isSubformSection),
                        field("sectionSequence", &L::sectionSequence), field("mandatory", &L::mandatory),
                        field("defaultValue", &L::defaultValue), field("fieldPosition", &L::fieldPosition),
                        field("additionalInfo", &L::additionalInfo));
    }
    friend bool operator==(const LayoutFieldData&, const LayoutFieldData&) = default;
};

/// A field in a layout, joined with what is known of the field.
struct LayoutMetadata : FieldMetadata {
    std::string layoutID;
    std::string sectionName;
    std::string sectionDV;
    bool isSubformSection = false;
    int sectionSequence = 0;
    bool mandatory = false;
    std::string defaultValue;
    int fieldPosition = 0;
    std::optional<ValueMap> additionalInfo;

    /// What a screen needs to offer values of a lookup; retrieval sets it.
    struct LookupData {
        /// The modules that the lookup points to with their fields; an entry is absent when it could not be read.
        struct Lookup {
            std::vector<std::optional<Module>> modules;
            std::vector<std::optional<FieldList>> fields;
        };
        /// The users to choose from, shared by all such fields; null when they could not be read.
        struct OwnerLookup {
            std::shared_ptr<const std::vector<User>> users;
        };
        std::variant<Lookup, OwnerLookup> data;

        const Lookup* lookup() const { return std::get_if<Lookup>(&data); }
        const OwnerLookup* ownerLookup() const { return std::get_if<OwnerLookup>(&data); }
    };
    std::optional<LookupData> addData;

    struct Constant {
        /// Keys inside `additionalInfo`.
        struct AdditionalInfo {
            static constexpr std::string_view formula = "formula";
            static constexpr std::string_view properties = "properties";
            static constexpr std::string_view subformLayoutId = "subform_layout_id";
            static constexpr std::string_view reorderRows = "reorder_rows";
            static constexpr std::string_view maximumRows = "maximum_rows";
        };
    };

    LayoutMetadata() = default;
    LayoutMetadata(const LayoutFieldData& place, const FieldMetadata& field);
    /// The stored form of its place.
    LayoutFieldData layoutFieldData() const;

    static constexpr auto fields() {
        using L = LayoutMetadata;
        return describe(describe(field("layoutID", &L::layoutID), field("sectionName", &L::sectionName),
                                 field("sectionDV", &L::sectionDV), field("isSubformSection", &L::isSubformSection),
                                 field("sectionSequence", &L::sectionSequence), field("mandatory", &L::mandatory),
                                 field("defaultValue", &L::defaultValue), field("fieldPosition", &L::fieldPosition),
                                 field("additionalInfo", &L::additionalInfo)),
                        FieldMetadata::fields());
    }
};

/// Columns of the table of layouts. It holds layout data alone: the field is found by its identifier.
struct LayoutMetadataDatabaseConstants : FieldMetadataDatabaseConstants {
    std::string_view LayoutID = "layout_id";
    std::string_view SectionName = "section_name";
    std::string_view SectionDV = "section_dv";
    std::string_view SectionSequence = "section_sequence";
    std::string_view Mandatory = "mandatory";
    std::string_view DefaultValue = "default_value";
    std::string_view FieldPosition = "position";
    /// Written and read only with `CommonConfigration.hasAdditionalInfoAndSubformKeysInLayoutMeta`.
    std::string_view IsSubformSection = "is_subform_section";
    std::string_view AdditionalInfo = "layout_additional_info";

    constexpr LayoutMetadataDatabaseConstants() { TableName = "LAYOUT_SPECIFIC_METADATA"; }

    ValueMap convertLayoutMetadataToDictionary(const LayoutFieldData& place) const;
    /// The row joined with its field; nothing when the list does not have the field.
    std::optional<LayoutMetadata> convertDictionaryToLayoutMetadata(const Row& row, const FieldList& fieldList) const;
};

}  // namespace tarvo
