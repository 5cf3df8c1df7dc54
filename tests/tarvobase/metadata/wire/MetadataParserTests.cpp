#include "tarvobase/metadata/wire/MetadataParser.h"
#include "tests/tarvobase/Fixture.h"
#include "tests/tarvobase/MetadataWire.h"

namespace tarvo {
namespace {

template <class T>
std::string described(const ParsedMetadata::Section<std::vector<T>>& section) {
    return section ? std::to_string(section->size()) : section.error().logText();
}
/// Returns "2", or "1 of 2, lessNumberOfKeys" if a row is bad.
template <class T>
std::string described(const ParsedMetadata::Section<ParsedMetadata::RowResults<T>>& section) {
    if (!section) return section.error().logText();
    std::size_t good = 0;
    std::string firstError;
    for (auto& row : *section) {
        good += row.ok();
        if (!row && firstError.empty()) firstError = ", " + row.error().logText();
    }
    auto count = std::to_string(section->size());
    return firstError.empty() ? count : std::to_string(good) + " of " + count + firstError;
}

std::vector<std::string> described(const ParsedMetadata& metadata) {
    return {described(metadata.relatedList),
            described(metadata.layouts),
            described(metadata.layoutFields),
            described(metadata.pickList),
            described(metadata.relatedListFields),
            described(metadata.fields),
            described(metadata.dependentModuleFields),
            "",
            described(metadata.relatedSort)};
}

class MetadataParserTest : public FoundationTest {
protected:
    ParsedMetadata parse(const ValueList& sections) {
        ParsedMetadataInfo info;
        info.moduleName = "Leads";
        return MetadataParser().parseResult(sections, info)->metadata.value();
    }
    /// Parses the standard sections with one of them replaced.
    ParsedMetadata parse(wire::Section place, Value section) {
        auto all = wire::sections("Leads");
        all[place] = std::move(section);
        return parse(all);
    }
};

const std::vector<std::string> whole{"2", "2", "2", "2", "2", "2", "2", "", "1"};

TEST_F(MetadataParserTest, ABrokenSectionLeavesTheOthers) {
    using namespace wire;
    ValueList one{"x"};
    auto cut = [](ValueList row) {
        row.pop_back();
        return row;
    };
    auto longer = [](ValueList row) {
        row.emplace_back("more");
        return row;
    };
    auto mistyped = [](ValueList row, std::size_t column) {
        row[column] = 5;
        return row;
    };
    struct {
        Section place;
        Value section;
        std::string expected;
    } cases[] = {
        {relatedLists, "text", "typeConversionFailed"},
        {relatedLists, ValueList{relatedListRow("1"), cut(relatedListRow("2"))}, "lessNumberOfKeys"},
        {relatedLists, ValueList{relatedListRow("1"), "text"}, "typeConversionFailed"},
        {relatedLists, ValueList{Value(mistyped(relatedListRow("1"), 2))}, "typeConversionFailedForIndex 2"},
        {relatedLists, ValueList{Value(longer(relatedListRow("1")))}, "1"},
        {layouts, ValueMap{}, "typeConversionFailed"},
        {layouts, ValueList{Value(cut(layoutRow("Leads", "L1")))}, "lessNumberOfKeys"},
        {layouts, ValueList{layoutRow("Leads", "L1"), longer(layoutRow("Leads", "L2"))}, "lessNumberOfKeys"},
        {layoutFields, nullptr, "typeConversionFailed"},
        {layoutFields, ValueList{}, "0"},
        {layoutFields, ValueList{layoutFieldRow("Leads", "F1"), one}, "1 of 2, lessNumberOfKeys"},
        {layoutFields, ValueList{5, layoutFieldRow("Leads", "F1")}, "1 of 2, typeConversionFailed"},
        {picklists, true, "typeConversionFailed"},
        {picklists, ValueList{mistyped(picklistRow("Leads", "A"), 0), picklistRow("Leads", "B")},
         "1 of 2, typeConversionFailedForIndex 0"},
        {columns, "text", "typeConversionFailed"},
        {columns, ValueList{Value(ValueList{"A"})}, "lessNumberOfKeys"},
        {columns, ValueList{ValueList{"A"}, ValueList{1}}, "typeConversionFailed"},
        {fields, 1.5, "typeConversionFailed"},
        {fields, ValueList{cut(fieldRow("Leads", "F1")), fieldRow("Leads", "F2")}, "1 of 2, lessNumberOfKeys"},
        {fields, ValueList{Value(mistyped(fieldRow("Leads", "F1"), 16))}, "0 of 1, typeConversionFailedForIndex 16"},
        {dependentFields, "", "typeConversionFailed"},
        {unused, "whatever", ""},
        {relatedSort, "Modified_Time", "typeConversionFailed"},
        {relatedSort, ValueList{}, "1"},
    };
    for (auto& broken : cases) {
        auto expected = whole;
        expected[broken.place] = broken.expected;
        EXPECT_EQ(described(parse(broken.place, broken.section)), expected)
            << broken.place << " " << json::write(broken.section).value();
    }
}

TEST_F(MetadataParserTest, SectionsMayBeMissingOrComeOnTop) {
    auto all = wire::sections("Leads");
    EXPECT_EQ(described(parse(all)), whole);
    all.emplace_back("of a later server");
    EXPECT_EQ(described(parse(all)), whole);
    for (std::size_t kept = 0; kept < whole.size(); ++kept) {
        auto expected = whole;
        for (auto missing = kept; missing < whole.size(); ++missing)
            if (missing != wire::unused) expected[missing] = "noData";
        auto sections = wire::sections("Leads");
        sections.resize(kept);
        EXPECT_EQ(described(parse(sections)), expected);
    }
}

TEST_F(MetadataParserTest, ReadsTheColumnsOfEveryRow) {
    configuration().hasAdditionalInfoAndSubformKeysInLayoutMeta = true;
    auto metadata = parse(wire::sections("Leads"));
    RelatedList list{"Leads", "Contacts", "People", "Leads1", true, 3, "", "List of Contacts", "Contacts_of"};
    EXPECT_EQ(metadata.relatedList->front(), list);
    EXPECT_EQ(metadata.layouts->back(), (ModuleLayoutInfo{"Leads", "L2", "Standard", true, false}));
    LayoutFieldData place{.layoutID = "L1", .fieldID = "F1", .fieldAPIName = "Api_F1", .crmColumnName = "COL_F1"};
    place.moduleName = "Leads", place.sectionName = "Basic", place.sectionDV = "Basic Information";
    place.sectionSequence = 2, place.fieldPosition = 7, place.defaultValue = "none";
    place.isSubformSection = place.mandatory = true, place.additionalInfo = ValueMap{{"maximum_rows", 25}};
    EXPECT_EQ(metadata.layoutFields->front().value(), place);
    PicklistMetadata pick{"A", "A shown", "F1", "Api_F1", "COL_F1", "Leads", "L1", "map", 4};
    EXPECT_EQ(metadata.pickList->front().value(), pick);
    FieldMetadata field{"F2", "Api_F2", "Leads", "COL_F2", "Label", FieldDataType::picklist, 255};
    field.isCustomField = field.isQuickCreate = field.visible = true;
    field.mode = "5", field.displayPrefs = {{"decimal_place", "2"}};
    EXPECT_EQ(metadata.fields->back().value(), field);
    EXPECT_EQ(metadata.dependentModuleFields->front()->moduleName, "Below");
    auto setting = [](SettingName key, const std::string& value) { return Settings{"Leads", key, value, value, true}; };
    EXPECT_EQ(metadata.relatedListFields.value(), (std::vector{setting(SettingName::businessCard, "Last_Name,Email"),
                                                               setting(SettingName::relatedList, "Phone")}));
    EXPECT_EQ(metadata.relatedSort.value(), (std::vector{setting(SettingName::relatedListSort, "Created_Time,asc")}));
}

TEST_F(MetadataParserTest, FurtherColumnsOfLayoutFieldsFollowTheConfiguration) {
    auto row = wire::layoutFieldRow("Leads", "F1");
    auto plain = parse(wire::layoutFields, ValueList{Value(row)}).layoutFields->front().value();
    EXPECT_FALSE(plain.isSubformSection);
    EXPECT_FALSE(plain.additionalInfo);
    row.resize(11);
    EXPECT_EQ(described(parse(wire::layoutFields, ValueList{Value(row)}).layoutFields), "1");
    configuration().hasAdditionalInfoAndSubformKeysInLayoutMeta = true;
    for (std::size_t size : {11u, 12u}) {
        row.resize(size, "true");
        EXPECT_EQ(described(parse(wire::layoutFields, ValueList{Value(row)}).layoutFields), "0 of 1, lessNumberOfKeys");
    }
    row.resize(13, ValueList{});
    auto without = parse(wire::layoutFields, ValueList{Value(row)}).layoutFields->front().value();
    EXPECT_TRUE(without.isSubformSection);
    EXPECT_FALSE(without.additionalInfo);
}

TEST_F(MetadataParserTest, OddColumnsDoNotLoseTheField) {
    const std::pair<Value, ValueMap> options[] = {
        {ValueMap{{"subform", ValueList{"1", "Items"}}}, {{"subform", ValueList{"1", "Items"}}}},
        {ValueList{"Accounts", "Contacts"}, {{"lookup_column", ValueList{"Accounts", "Contacts"}}}},
        {ValueList{}, {}},
        {nullptr, {}},
        {"{broken", {}},
        {7, {}},
    };
    for (auto& [column, expected] : options) {
        auto row = wire::fieldRow("Leads", "F1");
        row[17] = column;
        EXPECT_EQ(parse(wire::fields, ValueList{Value(row)}).fields->front()->displayPrefs, expected);
    }
    ValueList rows;
    for (auto type : {"text", "hologram", "hologram", "", "RRULE", " - "})
        rows.emplace_back(wire::fieldRow("Leads", "F1", type));
    rows.front().mutableList()->at(6) = "very long";
    rows.front().mutableList()->at(13) = nullptr;
    rows.front().mutableList()->at(7) = "TRUE";
    auto parsed = parse(wire::fields, rows).fields.value();
    std::vector<FieldDataType> types;
    for (auto& field : parsed) types.push_back(field->fieldType);
    using T = FieldDataType;
    EXPECT_EQ(types, (std::vector{T::text, T::unknown, T::unknown, T::none, T::file, T::unknown}));
    EXPECT_EQ(parsed.front()->maxLength, 0);
    EXPECT_EQ(parsed.front()->lookupModule, "");
    EXPECT_FALSE(parsed.front()->isReadOnly);
    EXPECT_EQ(linesWith("field type not known to this version: hologram"), 1);
    EXPECT_EQ(linesWith("options of a field"), 1);
}

TEST_F(MetadataParserTest, AShortSortFallsBackToTheLastModification) {
    for (auto& section :
         {ValueList{}, ValueList{"Name"}, ValueList{"Name", 5}, ValueList{Value(ValueList{"Name", "asc"})}}) {
        EXPECT_EQ(parse(wire::relatedSort, section).relatedSort->front().customSettings, "Modified_Time,desc");
    }
    EXPECT_TRUE(wasLogged("Related List - Sort Column and Order not found. Resolved using default"));
}

TEST_F(MetadataParserTest, AnEntryNeedsAModuleAndWholeTables) {
    const std::string bad = "typeConversionFailedForKey info", none = "Leads 0 tables";
    const std::pair<ValueMap, std::string> changes[] = {
        {{{"module", 5}}, bad},
        {{{"module", Value()}}, bad},
        {{{"servertime", Value()}, {"nodata", Value()}}, none},
        {{{"servertime", "today"}}, bad},
        {{{"responsetime", -1}}, bad},
        {{{"nodata", "false"}}, bad},
        {{{"tables", Value()}}, none},
        {{{"tables", "CREATE TABLE x"}}, bad},
        {{{"tables", ValueList{"CREATE TABLE x"}}}, bad},
        {{{"tables", ValueList{ValueMap{{"module", "Leads"}}}}}, bad},
        {{{"tables", ValueList{ValueMap{{"module", "Leads"}, {"query", "q"}, {"relatedListTable", 5}}}}}, bad},
        {{{"tables", ValueList{ValueMap{{"module", "Leads"}, {"query", "q"}}}}}, "Leads 1 tables"},
    };
    for (auto& [change, expected] : changes) {
        auto info = wire::info("Leads");
        for (auto& [key, value] : change) info.set(key, value);
        // A bad entry leaves the next one readable.
        auto answer = MetadataParser().parse(Data(wire::body({wire::entry(info, {}), wire::entry("Deals")}))).value();
        auto& entry = answer.result.front();
        auto tables = entry && entry->info.tableList ? entry->info.tableList->size() : 0;
        EXPECT_EQ(entry ? entry->info.moduleName + " " + std::to_string(tables) + " tables" : entry.error().logText(),
                  expected)
            << json::write(change).value();
        EXPECT_EQ(described(answer.result.back()->data->metadata.value()), whole);
    }
}

}  // namespace
}  // namespace tarvo
