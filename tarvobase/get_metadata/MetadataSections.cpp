#include "tarvobase/get_metadata/MetadataSections.h"

#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/network_layer/PositionalRow.h"
#include "tarvobase/utils/LogOnce.h"

namespace tarvo::metadata_sections {

namespace {

using Case = ParserError::Case;

/// How the rows of a section are read: the columns that they have at least, and one row's value.
template <class T>
struct RowFormat {
    std::size_t columns;
    T (*read)(PositionalRow& row, const SectionContext& context);
};

template <class T>
Result<T, ParserError> readRow(const Value& entry, const RowFormat<T>& format, const SectionContext& context) {
    auto opened = PositionalRow::open(entry, format.columns, PositionalRow::Mode::strict);
    if (!opened) return opened.error();
    auto row = *std::move(opened);
    T value = format.read(row, context);
    if (row.error()) return *row.error();
    return value;
}

template <class T>
RowSection<T> readRows(const Value& section, const RowFormat<T>& format, const SectionContext& context) {
    auto entries = section.asList();
    if (!entries) return ParserError(Case::typeConversionFailed);
    ParsedMetadata::RowResults<T> rows;
    rows.reserve(entries->size());
    for (auto& entry : *entries) rows.push_back(readRow(entry, format, context));
    return rows;
}

/// The rows of a section that stands or falls as a whole.
template <class T>
ParsedMetadata::Section<std::vector<T>> readWhole(const Value& section, const RowFormat<T>& format,
                                                  const SectionContext& context) {
    auto rows = readRows(section, format, context);
    if (!rows) return rows.error();
    std::vector<T> values;
    values.reserve(rows->size());
    for (auto& row : *rows) {
        if (!row) return row.error();
        values.push_back(*std::move(row));
    }
    return values;
}

RelatedList relatedListOf(PositionalRow& row, const SectionContext& context) {
    RelatedList list;
    list.moduleName = context.moduleName;
    list.relatedModuleName = row.text(0);
    list.dislayName = row.text(1);
    list.listID = row.text(2);
    list.listName = row.text(3);
    list.relatedListAPIName = row.text(4);
    list.relatedOrder = row.number(5);
    list.isDefault = row.flag(6);
    return list;
}

ModuleLayoutInfo layoutOf(PositionalRow& row, const SectionContext&) {
    ModuleLayoutInfo layout;
    layout.moduleName = row.text(0);
    layout.layoutID = row.text(1);
    layout.layoutName = row.text(2);
    layout.isAccessible = row.flag(3);
    layout.isDefault = row.flag(4);
    return layout;
}

LayoutFieldData layoutFieldOf(PositionalRow& row, const SectionContext& context) {
    LayoutFieldData field;
    field.layoutID = row.text(0);
    field.fieldID = row.text(1);
    field.fieldAPIName = row.text(2);
    field.crmColumnName = row.text(3);
    field.moduleName = row.text(4);
    field.sectionName = row.text(5);
    field.sectionDV = row.text(6);
    field.sectionSequence = row.number(7);
    field.mandatory = row.flag(8);
    field.defaultValue = row.text(9);
    field.fieldPosition = row.number(10);
    if (!context.hasAdditionalInfo) return field;
    field.isSubformSection = row.flag(11);
    if (auto info = row.value(12).asMap()) field.additionalInfo = *info;
    return field;
}

PicklistMetadata picklistOf(PositionalRow& row, const SectionContext&) {
    PicklistMetadata value;
    value.fieldActualValue = row.text(0);
    value.fieldOptionalValue = row.text(1);
    value.fieldID = row.text(2);
    value.fieldAPIName = row.text(3);
    value.crmColumnName = row.text(4);
    value.moduleName = row.text(5);
    value.layoutID = row.text(6);
    value.fieldMap = row.text(7);
    value.position = row.number(8);
    return value;
}

FieldDataType fieldTypeOf(const std::string& text) {
    if (auto type = fromRawText<FieldDataType>(text)) return *type;
    logOnce("field type not known to this version: " + text);
    return FieldDataType::unknown;
}

/// The extra options of a field: a map as it is, or the modules of a lookup as a list. Anything else costs the options,
/// not the field.
ValueMap displayPrefsOf(const Value& column, const SectionContext& context) {
    if (auto map = column.asMap()) return *map;
    auto list = column.asList();
    if (!list && !column.isNull())
        logOnce("options of a field of " + context.moduleName + " are neither a map nor a list");
    return list && !list->empty() ? ValueMap{{"lookup_column", *list}} : ValueMap();
}

FieldMetadata fieldOf(PositionalRow& row, const SectionContext& context) {
    FieldMetadata field;
    field.fieldID = row.text(0);
    field.fieldAPIName = row.text(1);
    field.moduleName = row.text(2);
    field.columnCRMName = row.text(3);
    field.fieldLabel = row.text(4);
    field.fieldType = fieldTypeOf(row.text(5));
    field.maxLength = row.number(6);
    field.isReadOnly = row.flag(7);
    field.isCustomField = row.flag(8);
    field.isUnique = row.flag(9);
    field.isQuickCreate = row.flag(10);
    field.isPrimaryKey = row.flag(11);
    field.isMproxyMetadata = row.flag(12);
    field.lookupModule = row.text(13);
    field.relatedListID = row.text(14);
    field.visible = row.flag(15);
    field.mode = row.text(16);
    field.displayPrefs = displayPrefsOf(row.value(17), context);
    return field;
}

/// A setting as the server gives it: the user has not chosen yet.
Settings settingOf(const SectionContext& context, SettingName key, const std::string& value) {
    return {.moduleName = context.moduleName,
            .settingsKey = key,
            .defaultSettings = value,
            .customSettings = value,
            .isDefault = true};
}

}  // namespace

RelatedListSection relatedLists(const Value& section, const SectionContext& context) {
    return readWhole(section, RowFormat<RelatedList>{7, relatedListOf}, context);
}

LayoutSection layouts(const Value& section, const SectionContext& context) {
    constexpr std::size_t columns = 5;
    auto entries = section.asList();
    if (entries && entries->empty()) return ParserError(Case::lessNumberOfKeys);
    if (entries)
        for (auto& entry : *entries)
            if (entry.asList() && entry.asList()->size() != columns) return ParserError(Case::lessNumberOfKeys);
    return readWhole(section, RowFormat<ModuleLayoutInfo>{columns, layoutOf}, context);
}

RowSection<LayoutFieldData> layoutFields(const Value& section, const SectionContext& context) {
    std::size_t columns = context.hasAdditionalInfo ? 13 : 11;
    return readRows(section, RowFormat<LayoutFieldData>{columns, layoutFieldOf}, context);
}

RowSection<PicklistMetadata> picklists(const Value& section, const SectionContext& context) {
    return readRows(section, RowFormat<PicklistMetadata>{9, picklistOf}, context);
}

SettingsSection relatedListFields(const Value& section, const SectionContext& context) {
    auto lists = section.asList();
    if (!lists) return ParserError(Case::typeConversionFailed);
    if (lists->size() < 2) return ParserError(Case::lessNumberOfKeys);
    auto card = readIndex<std::vector<std::string>>(*lists, 0);
    auto row = readIndex<std::vector<std::string>>(*lists, 1);
    if (!card || !row) return ParserError(Case::typeConversionFailed);
    return std::vector{settingOf(context, SettingName::businessCard, text::join(*card, ",")),
                       settingOf(context, SettingName::relatedList, text::join(*row, ","))};
}

RowSection<FieldMetadata> fields(const Value& section, const SectionContext& context) {
    return readRows(section, RowFormat<FieldMetadata>{18, fieldOf}, context);
}

SettingsSection relatedSort(const Value& section, const SectionContext& context) {
    auto entries = section.asList();
    if (!entries) return ParserError(Case::typeConversionFailed);
    std::string sort = "Modified_Time,desc";
    if (entries->size() >= 2 && entries->at(0).asText() && entries->at(1).asText())
        sort = *entries->at(0).asText() + "," + *entries->at(1).asText();
    else
        platform::log("Related List - Sort Column and Order not found. Resolved using default");
    return std::vector{settingOf(context, SettingName::relatedListSort, sort)};
}

}  // namespace tarvo::metadata_sections
