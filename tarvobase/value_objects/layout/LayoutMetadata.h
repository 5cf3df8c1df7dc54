#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tarvobase/value_objects/field/FieldList.h"
#include "tarvobase/value_objects/field/FieldMetadata.h"
#include "tarvobase/value_objects/module/Module.h"

namespace tarvo {

struct User;
struct LayoutFieldData;
struct LayoutMetadata;

/// Columns of the table of layouts. The table holds layout data only; the field is found by its identifier.
struct LayoutMetadataDatabaseConstants : FieldMetadataDatabaseConstants {
    std::string_view LayoutID = "layout_id";
    std::string_view SectionName = "section_name";
    std::string_view SectionDV = "section_dv";
    std::string_view SectionSequence = "section_sequence";
    std::string_view Mandatory = "mandatory";
    std::string_view DefaultValue = "default_value";
    std::string_view FieldPosition = "position";
    /// These two are written and read only with `CommonConfigration.hasAdditionalInfoAndSubformKeysInLayoutMeta`.
    std::string_view IsSubformSection = "is_subform_section";
    std::string_view AdditionalInfo = "layout_additional_info";

    constexpr LayoutMetadataDatabaseConstants() { TableName = "LAYOUT_SPECIFIC_METADATA"; }

    ValueMap convertLayoutMetadataToDictionary(const LayoutFieldData& place) const;
    /// Returns the row joined with its field, or nullopt if the list lacks the field.
    std::optional<LayoutMetadata> convertDictionaryToLayoutMetadata(const Row& row, const FieldList& fieldList) const;
};

/// Reads the integer 1, the Bool true and the text "true" as true, whatever type the server gave the column.
struct OptBoolCodec {
    static Value write(bool value, Form form);
    static std::optional<bool> read(const ValueView& view, Form form);
};

/// Information that JSON cannot express is left out.
struct AdditionalInfoCodec {
    static Value write(const std::optional<ValueMap>& map, Form form);
    static std::optional<std::optional<ValueMap>> read(const ValueView& view, Form form);
};

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
        using V = LayoutFieldData;
        using Names = LayoutMetadataDatabaseConstants;
        return describe(field("layoutID", &V::layoutID, &Names::LayoutID).at(0),
                        field("fieldID", &V::fieldID, &Names::FieldID).at(1),
                        field("fieldAPIName", &V::fieldAPIName, &Names::FieldAPIName).at(2),
                        field("crmColumnName", &V::crmColumnName, &Names::ColumnCRMName).at(3),
                        field("moduleName", &V::moduleName, &Names::ModuleName).at(4),
                        field("sectionName", &V::sectionName, &Names::SectionName).at(5),
                        field("sectionDV", &V::sectionDV, &Names::SectionDV).at(6),
                        field("isSubformSection", &V::isSubformSection, &Names::IsSubformSection),
                        field("sectionSequence", &V::sectionSequence, &Names::SectionSequence).at(7),
                        fieldBy<OptBoolCodec>("mandatory", &V::mandatory, &Names::Mandatory).at(8),
                        field("defaultValue", &V::defaultValue, &Names::DefaultValue).at(9),
                        field("fieldPosition", &V::fieldPosition, &Names::FieldPosition).at(10),
                        fieldBy<AdditionalInfoCodec>("additionalInfo", &V::additionalInfo, &Names::AdditionalInfo));
    }
    friend bool operator==(const LayoutFieldData&, const LayoutFieldData&) = default;
};

/// A field in a layout, joined with the field's metadata.
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

    /// What a screen needs to offer values for a lookup. The reader of layouts fills it in.
    struct LookupData {
        /// The modules that the lookup points to, with their fields. A module that could not be read has no fields.
        struct Lookup {
            std::vector<std::optional<Module>> modules;
            std::vector<std::optional<FieldList>> fields;
        };
        /// The users to choose from, shared by all such fields; null if they could not be read.
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
    /// Returns the stored form of the field's place in the layout.
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

}  // namespace tarvo
