#pragma once

#include <optional>
#include <string>

#include "platform/Result.h"
#include "platform/Rows.h"
#include "tarvobase/configuration/FieldIdentifier.h"
#include "tarvobase/usecase/Describe.h"
#include "tarvobase/value_objects/FieldDataType.h"

namespace tarvo {

/// A column of a module.
struct FieldMetadata {
    std::string fieldID;
    std::string fieldAPIName;
    std::string moduleName;
    std::string columnCRMName;  ///< column of the record table where fields go by their CRM name
    std::string fieldLabel;
    FieldDataType fieldType = FieldDataType::none;
    int maxLength = 0;
    bool isReadOnly = false;
    bool isCustomField = false;
    bool isUnique = false;
    bool isQuickCreate = false;
    bool isPrimaryKey = false;
    bool isMproxyMetadata = false;  ///< such fields are left out of sort lists
    std::string lookupModule;       ///< API name of the module that a lookup points to
    std::string relatedListID;      ///< the related list that a lookup fills
    bool visible = false;
    std::string mode;  ///< decimal text of a `DisplayMode`
    ValueMap displayPrefs;

    /// Where a field is shown: a set of bits.
    struct DisplayMode {
        int rawValue = 0;

        static const DisplayMode none;
        static const DisplayMode display;
        static const DisplayMode edit;
        static const DisplayMode create;

        /// Whether every bit of the other set is in this one. `none` is in every set.
        constexpr bool contains(DisplayMode wanted) const { return (rawValue & wanted.rawValue) == wanted.rawValue; }
        friend constexpr DisplayMode operator|(DisplayMode a, DisplayMode b) { return {a.rawValue | b.rawValue}; }
        friend bool operator==(const DisplayMode&, const DisplayMode&) = default;
    };

    struct Constant {
        /// Keys inside `displayPrefs`.
        struct DisplayPrefs {
            static constexpr std::string_view subform = "subform";
            static constexpr std::string_view decimalPlace = "decimal_place";
            static constexpr std::string_view currency = "currency";
            static constexpr std::string_view lookup = "lookup_column";
            static constexpr std::string_view autoNumber = "auto_number";
        };
    };

    /// The number in `mode`; 1 when it is empty or unreadable, so that such a field is shown and not edited.
    int integerMode() const;
    DisplayMode displayMode() const { return {integerMode()}; }

    /// The member by which the running system knows fields, or by which a naming that was taken earlier does.
    const std::string& fieldIdentifier() const;
    const std::string& fieldIdentifier(const FieldIdentifier& naming) const {
        return this->*naming.fieldIdentifierPath;
    }

    bool isLookUpField() const { return isLookupField(fieldType); }
    /// Whether the value is a person, whose name is shown from a first and a last name.
    bool isLookupNameField() const;

    struct SubformModuleInfo {
        std::string moduleID;
        std::string apiName;
        friend bool operator==(const SubformModuleInfo&, const SubformModuleInfo&) = default;
    };
    /// The module of a subform's rows; nothing for another field or when the server said it in another form.
    std::optional<SubformModuleInfo> getSubformModuleInfo() const;

    static constexpr auto fields() {
        using F = FieldMetadata;
        return describe(field("fieldID", &F::fieldID), field("fieldAPIName", &F::fieldAPIName),
                        field("moduleName", &F::moduleName), field("columnCRMName", &F::columnCRMName),
                        field("fieldLabel", &F::fieldLabel), field("fieldType", &F::fieldType),
                        field("maxLength", &F::maxLength), field("isReadOnly", &F::isReadOnly),
                        field("isCustomField", &F::isCustomField), field("isUnique", &F::isUnique),
                        field("isQuickCreate", &F::isQuickCreate), field("isPrimaryKey", &F::isPrimaryKey),
                        field("isMproxyMetadata", &F::isMproxyMetadata), field("lookupModule", &F::lookupModule),
                        field("relatedListID", &F::relatedListID), field("visible", &F::visible),
                        field("mode", &F::mode), field("displayPrefs", &F::displayPrefs));
    }
    friend bool operator==(const FieldMetadata&, const FieldMetadata&) = default;
};

inline constexpr FieldMetadata::DisplayMode FieldMetadata::DisplayMode::none{0};
inline constexpr FieldMetadata::DisplayMode FieldMetadata::DisplayMode::display{1};
inline constexpr FieldMetadata::DisplayMode FieldMetadata::DisplayMode::edit{2};
inline constexpr FieldMetadata::DisplayMode FieldMetadata::DisplayMode::create{4};
using DisplayMode = FieldMetadata::DisplayMode;

/// What a field of a module and a field of a layout have in common; a `LayoutMetadata` is one too.
using Metadata = FieldMetadata;

/// Plain keys of a field, and in the twin below its columns.
struct FieldMetadataConstants {
    std::string_view TableName = "ModuleSpecificMetadata";
    std::string_view FieldID = "FiledID";
    std::string_view FieldAPIName = "FieldAPIName";
    std::string_view ModuleName = "ModuleName";
    std::string_view ColumnCRMName = "ColumnCRMName";
    std::string_view FieldLabel = "FieldLabel";
    std::string_view FieldType = "FieldType";
    std::string_view MaxLength = "MaxLength";
    std::string_view IsReadOnly = "IsReadOnly";
    std::string_view IsCustomField = "IsCustomField";
    std::string_view IsUnique = "IsUnique";
    std::string_view IsQuickCreate = "IsQuickCreate";
    std::string_view IsPrimaryKey = "IsPrimaryKey";
    std::string_view IsMproxyMetadata = "IsMproxyMetadata";
    std::string_view LookupModule = "LookupModule";
    std::string_view RelatedListID = "RelatedListID";
    std::string_view Visible = "Visible";
    std::string_view Mode = "Mode";
    std::string_view DisplayPrefs = "DisplayPrefs";

    ValueMap getDictionary(const FieldMetadata& fieldMetadata) const;
    /// Fails with the key of what a field cannot do without: a known type and its names.
    Result<FieldMetadata, std::string> getValue(const ValueMap& map) const;
};

struct FieldMetadataDatabaseConstants : FieldMetadataConstants {
    constexpr FieldMetadataDatabaseConstants() {
        TableName = "MODULE_SPECIFIC_METADATA";
        FieldID = "field_id";
        FieldAPIName = "field_api_name";
        ModuleName = "module_name";
        ColumnCRMName = "crm_col_name";
        FieldLabel = "field_label";
        FieldType = "field_type";
        MaxLength = "max_length";
        IsReadOnly = "is_read_only";
        IsCustomField = "is_custom_field";
        IsUnique = "is_unique";
        IsQuickCreate = "is_quick_create";
        IsPrimaryKey = "is_primary_key";
        IsMproxyMetadata = "is_mproxy_metadata";
        LookupModule = "lookup_module_api";
        RelatedListID = "related_list_id";
        Visible = "visible";
        Mode = "mode";
        DisplayPrefs = "additional_info";
    }
    ValueMap getDictionary(const FieldMetadata& fieldMetadata) const;
    Result<FieldMetadata, std::string> getValue(const Row& row) const;

    std::string_view crmColumn() const { return ColumnCRMName; }
    std::string_view fieldApiName() const { return FieldAPIName; }
    /// The column of the identifier of the naming in force, or of a naming that was taken earlier.
    std::string_view fieldIdentifier() const;
    std::string_view fieldIdentifier(const FieldIdentifier& naming) const {
        return this->*naming.fieldConstantIdentifierKP;
    }
};

}  // namespace tarvo
