#pragma once

#include <optional>
#include <string>

#include "platform/Result.h"
#include "platform/Rows.h"
#include "tarvobase/configuration/FieldIdentifier.h"
#include "tarvobase/storage/StoredNames.h"
#include "tarvobase/value_objects/field/FieldDataType.h"

namespace tarvo {

struct FieldMetadata;

/// Reading fails with the key of the type if the type is absent or unknown to this version, since nobody could
/// interpret the values of such a field.
struct FieldMetadataConstants : StoredNames<FieldMetadataConstants, FieldMetadata, Result<FieldMetadata, std::string>> {
    std::string_view TableName = of("ModuleSpecificMetadata", "MODULE_SPECIFIC_METADATA");
    std::string_view FieldID = of("FiledID", "field_id");
    std::string_view FieldAPIName = of("FieldAPIName", "field_api_name");
    std::string_view ModuleName = of("ModuleName", "module_name");
    std::string_view ColumnCRMName = of("ColumnCRMName", "crm_col_name");
    std::string_view FieldLabel = of("FieldLabel", "field_label");
    std::string_view FieldType = of("FieldType", "field_type");
    std::string_view MaxLength = of("MaxLength", "max_length");
    std::string_view IsReadOnly = of("IsReadOnly", "is_read_only");
    std::string_view IsCustomField = of("IsCustomField", "is_custom_field");
    std::string_view IsUnique = of("IsUnique", "is_unique");
    std::string_view IsQuickCreate = of("IsQuickCreate", "is_quick_create");
    std::string_view IsPrimaryKey = of("IsPrimaryKey", "is_primary_key");
    std::string_view IsMproxyMetadata = of("IsMproxyMetadata", "is_mproxy_metadata");
    std::string_view LookupModule = of("LookupModule", "lookup_module_api");
    std::string_view RelatedListID = of("RelatedListID", "related_list_id");
    std::string_view Visible = of("Visible", "visible");
    std::string_view Mode = of("Mode", "mode");
    std::string_view DisplayPrefs = of("DisplayPrefs", "additional_info");
};
struct FieldMetadataDatabaseConstants : TableTwin<FieldMetadataConstants> {
    std::string_view crmColumn() const { return ColumnCRMName; }
    std::string_view fieldApiName() const { return FieldAPIName; }
    /// Returns the column that holds the identifier under the naming in force, or under the given naming.
    std::string_view fieldIdentifier() const;
    std::string_view fieldIdentifier(const FieldIdentifier& naming) const {
        return this->*naming.fieldConstantIdentifierKP;
    }
};

/// If the stored text is not a JSON map, the field loses its preferences but is still read.
struct DisplayPrefsCodec {
    static Value write(const ValueMap& map, Form form);
    static std::optional<ValueMap> read(const ValueView& view, Form form);
};

/// A field of a module.
struct FieldMetadata {
    std::string fieldID;
    std::string fieldAPIName;
    std::string moduleName;
    std::string columnCRMName;  ///< column of the record table
    std::string fieldLabel;
    FieldDataType fieldType = FieldDataType::none;
    int maxLength = 0;
    bool isReadOnly = false;
    bool isCustomField = false;
    bool isUnique = false;
    bool isQuickCreate = false;
    bool isPrimaryKey = false;
    bool isMproxyMetadata = false;  ///< such fields are not offered for sorting
    std::string lookupModule;       ///< API name of the module that a lookup points to
    std::string relatedListID;      ///< the related list that a lookup fills
    bool visible = false;
    std::string mode;  ///< decimal text of a `DisplayMode`
    ValueMap displayPrefs;

    /// The set of places where a field is shown, as bits.
    struct DisplayMode {
        int rawValue = 0;

        static const DisplayMode none;
        static const DisplayMode display;
        static const DisplayMode edit;
        static const DisplayMode create;

        /// Returns whether every bit of the other set is in this one. Every set contains `none`.
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

    /// Returns the number in `mode`, or 1 if the text is empty or unreadable, so that such a field is shown but not
    /// edited.
    int integerMode() const;
    DisplayMode displayMode() const { return {integerMode()}; }

    /// Returns the field's identifier under the naming in force, or under the given naming.
    const std::string& fieldIdentifier() const;
    const std::string& fieldIdentifier(const FieldIdentifier& naming) const {
        return this->*naming.fieldIdentifierPath;
    }

    bool isLookUpField() const { return isLookupField(fieldType); }
    /// Returns whether the value is a person, whose shown name is made of a first and a last name.
    bool isLookupNameField() const;

    struct SubformModuleInfo {
        std::string moduleID;
        std::string apiName;
        friend bool operator==(const SubformModuleInfo&, const SubformModuleInfo&) = default;
    };
    /// Returns the module of a subform's rows, or nullopt if the field is not a subform or the server sent another
    /// form.
    std::optional<SubformModuleInfo> getSubformModuleInfo() const;

    static constexpr auto fields() {
        using V = FieldMetadata;
        using Names = FieldMetadataConstants;
        return describe(field("fieldID", &V::fieldID, &Names::FieldID).at(0),
                        field("fieldAPIName", &V::fieldAPIName, &Names::FieldAPIName).at(1),
                        field("moduleName", &V::moduleName, &Names::ModuleName).at(2),
                        field("columnCRMName", &V::columnCRMName, &Names::ColumnCRMName).at(3),
                        field("fieldLabel", &V::fieldLabel, &Names::FieldLabel).at(4),
                        field("fieldType", &V::fieldType, &Names::FieldType).required(),
                        field("maxLength", &V::maxLength, &Names::MaxLength).at(6),
                        field("isReadOnly", &V::isReadOnly, &Names::IsReadOnly).at(7),
                        field("isCustomField", &V::isCustomField, &Names::IsCustomField).at(8),
                        field("isUnique", &V::isUnique, &Names::IsUnique).at(9),
                        field("isQuickCreate", &V::isQuickCreate, &Names::IsQuickCreate).at(10),
                        field("isPrimaryKey", &V::isPrimaryKey, &Names::IsPrimaryKey).at(11),
                        field("isMproxyMetadata", &V::isMproxyMetadata, &Names::IsMproxyMetadata).at(12),
                        field("lookupModule", &V::lookupModule, &Names::LookupModule).at(13),
                        field("relatedListID", &V::relatedListID, &Names::RelatedListID).at(14),
                        field("visible", &V::visible, &Names::Visible).at(15),
                        field("mode", &V::mode, &Names::Mode).at(16),
                        fieldBy<DisplayPrefsCodec>("displayPrefs", &V::displayPrefs, &Names::DisplayPrefs));
    }
    friend bool operator==(const FieldMetadata&, const FieldMetadata&) = default;
};

inline constexpr FieldMetadata::DisplayMode FieldMetadata::DisplayMode::none{0};
inline constexpr FieldMetadata::DisplayMode FieldMetadata::DisplayMode::display{1};
inline constexpr FieldMetadata::DisplayMode FieldMetadata::DisplayMode::edit{2};
inline constexpr FieldMetadata::DisplayMode FieldMetadata::DisplayMode::create{4};
using DisplayMode = FieldMetadata::DisplayMode;

/// What a field of a module and a field of a layout have in common. A `LayoutMetadata` is one, too.
using Metadata = FieldMetadata;

}  // namespace tarvo
