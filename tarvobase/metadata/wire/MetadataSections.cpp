#include "tarvobase/metadata/wire/MetadataSections.h"

#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/network_layer/PositionalRow.h"
#include "tarvobase/utils/LogOnce.h"

namespace tarvo::metadata_sections {

namespace {

using Case = ParserError::Case;

/// How the rows of a section are read: the minimum number of columns, and the function that reads one row.
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

/// Reads the rows of a section that fails as a whole if one row fails.
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

/// Reads a row whose columns are exactly the members of the value.
template <class T>
T filled(PositionalRow& row, const SectionContext&) {
    T value;
    row.fill(value);
    return value;
}

RelatedList relatedListOf(PositionalRow& row, const SectionContext& context) {
    auto list = filled<RelatedList>(row, context);
    list.moduleName = context.moduleName;
    return list;
}

LayoutFieldData layoutFieldOf(PositionalRow& row, const SectionContext& context) {
    auto field = filled<LayoutFieldData>(row, context);
    if (!context.hasAdditionalInfo) return field;
    field.isSubformSection = row.flag(11);
    if (auto info = row.value(12).asMap()) field.additionalInfo = *info;
    return field;
}

FieldDataType fieldTypeOf(const std::string& text) {
    if (auto type = fromRawText<FieldDataType>(text)) return *type;
    logOnce("field type not known to this version: " + text);
    return FieldDataType::unknown;
}

/// Returns the extra options of a field: a map as it is, or the modules of a lookup as a list. Anything else loses the
/// options but not the field.
ValueMap displayPrefsOf(const Value& column, const SectionContext& context) {
    if (auto map = column.asMap()) return *map;
    auto list = column.asList();
    if (!list && !column.isNull())
        logOnce("options of a field of " + context.moduleName + " are neither a map nor a list");
    return list && !list->empty() ? ValueMap{{"lookup_column", *list}} : ValueMap();
}

FieldMetadata fieldOf(PositionalRow& row, const SectionContext& context) {
    auto field = filled<FieldMetadata>(row, context);
    field.fieldType = fieldTypeOf(row.text(5));
    field.displayPrefs = displayPrefsOf(row.value(17), context);
    return field;
}

/// Makes a setting as the server gives it, before any choice of the user.
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
    return readWhole(section, RowFormat<ModuleLayoutInfo>{columns, filled<ModuleLayoutInfo>}, context);
}

RowSection<LayoutFieldData> layoutFields(const Value& section, const SectionContext& context) {
    std::size_t columns = context.hasAdditionalInfo ? 13 : 11;
    return readRows(section, RowFormat<LayoutFieldData>{columns, layoutFieldOf}, context);
}

RowSection<PicklistMetadata> picklists(const Value& section, const SectionContext& context) {
    return readRows(section, RowFormat<PicklistMetadata>{9, filled<PicklistMetadata>}, context);
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
        platform::log(platform::LogLevel::progress, "metadata",
                      "Related List - Sort Column and Order not found. Resolved using default");
    return std::vector{settingOf(context, SettingName::relatedListSort, sort)};
}

}  // namespace tarvo::metadata_sections
