#include <array>

#include "platform/Text.h"
#include "tarvobase/records/sql/CustomViewOfflineQueryParser.h"
#include "tarvobase/records/sql/CustomViewQueryFormation.h"
#include "tarvobase/sync/wire/CVSyncParser.h"
#include "tarvobase/value_objects/view/CustomView.h"
#include "tests/tarvobase/records/sql/FilterFixture.h"

namespace tarvo {
namespace {

const std::string separator(CustomViewOfflineQuery::replaceSeparator);

ValueMap leaf(const std::string& field, const std::string& comparator, Value value) {
    return {{"field", field}, {"comparator", comparator}, {"value", std::move(value)}};
}

class CustomViewCriteriaTest : public FilterTest {
protected:
    static CustomView viewOf(const Value& criteria) {
        auto query = CustomViewOfflineQueryParser::compile(criteria).value();
        CustomView view;
        view.isOfflineSupported = query.isRunnable;
        view.offlineQuery = query.placeholder;
        view.offlineQueryReplaceInfo = query.replaceInfo;
        return view;
    }
    /// Returns the ids that a view selects, or the name of its failure.
    std::string run(const CustomView& view) {
        auto where = CustomViewQueryFormation::getWhereCondition(view, fields);
        if (where) return idsWhere(*where);
        return std::string(caseName(where.error().which)) + " " + where.error().fieldAPI;
    }
    std::string run(const Value& criteria) { return run(viewOf(criteria)); }
};

TEST_F(CustomViewCriteriaTest, TemplatesHaveTheStoredShape) {
    using Pieces = std::vector<std::string>;
    auto a = leaf("A", "equal", "1");
    const std::tuple<Value, std::string, Pieces> cases[] = {
        {leaf("Status", "equal", "Open"), "({0} = '{1}')", {"Status", "Open"}},
        {leaf("A", "equal", "x,,y"), "({0} = '{1}' or {2} = '{3}')", {"A", "x", "A", "y"}},
        {leaf("A", "contains", "a, b"), "({0} like '{1}' or {2} like '{3}')", {"A", "%a%", "A", "%b%"}},
        {leaf("A", "ends_with", "a"), "({0} like '{1}')", {"A", "%a"}},
        {leaf("A", "like", "${EMPTY}"), "({0} like '{1}')", {"A", "${EMPTY}"}},
        {leaf("A", "greater_than", 5), "({0} > '{1}')", {"A", "5"}},
        {ValueList{a, "and", leaf("B", "in", ValueList{"x", "y"})},
         "(({0} = '{1}') and ({2} in '{3}'))",
         {"A", "1", "B", "[x,y]"}},
        {ValueList{ValueList{a, "or", a}, "and", a},
         "((({0} = '{1}') or ({2} = '{3}')) and ({4} = '{5}'))",
         {"A", "1", "A", "1", "A", "1"}},
    };
    for (auto& [criteria, placeholder, pieces] : cases) {
        auto query = CustomViewOfflineQueryParser::compile(criteria);
        ASSERT_TRUE(query && query->isRunnable) << placeholder;
        EXPECT_EQ(query->placeholder, placeholder);
        EXPECT_EQ(query->replaceInfo, text::join(pieces, separator));
    }
}

TEST_F(CustomViewCriteriaTest, EveryComparatorFindsItsRows) {
    const ValueList texts{"Acme", "acme ltd", "The Acme", "Zylker", nullptr, ""};
    const ValueList numbers{"2", "10", "9.5", "", nullptr, "1e1"};
    const std::tuple<const char*, ValueList, const char*, Value, const char*> cases[] = {
        {"Company", texts, "equal", "ACME", "1"},
        {"Company", texts, "equal", "Acme,Zylker", "1 4"},
        {"Company", texts, "equal", "", "6"},
        {"Company", texts, "not_equal", "Acme", "2 3 4 6"},
        {"Company", texts, "like", "acme", "1 2 3"},
        {"Company", texts, "not_contains", "acme", "4 6"},
        {"Company", texts, "starts_with", "acme", "1 2"},
        {"Company", texts, "ends_with", "acme", "1 3"},
        {"Company", texts, "in", ValueList{"Zylker", "Acme"}, "1 4"},
        {"Company", texts, "in", ValueList{}, "6"},
        {"Company", texts, "not_in", ValueList{"Zylker", "Acme"}, "2 3 6"},
        {"Company", texts, "greater_equal", "The Acme", "3 4"},
        {"Amount", numbers, "equal", "10", "2 6"},
        {"Amount", numbers, "greater_than", "9", "2 3 6"},
        {"Amount", numbers, "greater_equal", "9.5", "2 3 6"},
        {"Amount", numbers, "less_than", "10", "1 3"},
        {"Amount", numbers, "less_equal", "9.5", "1 3"},
        {"Created_Time", {5, 7, "", nullptr}, "greater_equal", "6", "2"},
        {"Created_Time", {5, 7, "", nullptr}, "less_than", "6", "1"},
        {"Converted", {"false", "true", nullptr}, "equal", "0", "1"},
        {"Converted", {"false", "true", nullptr}, "equal", "true", "2"},
        {"$status", {"c_new", "c-new"}, "equal", "c_new", "1"},
    };
    for (auto naming : {FieldIdentifier::fieldAPINameIdentifier(), FieldIdentifier::crmColumnNameIdentifier()}) {
        use(naming);
        for (auto& [field, rows, comparator, value, ids] : cases) {
            store(fields.identifierOf(*fields.getFieldByApiName(field)), rows);
            EXPECT_EQ(run(leaf(field, comparator, value)), ids) << field << " " << comparator << " " << ids;
        }
    }
}

TEST_F(CustomViewCriteriaTest, AnyTextMeansItself) {
    ValueList values{"[y]"};
    for (auto& text : difficultTexts()) values.push_back(text);
    store("Company", values);
    for (std::size_t i = 0; i < values.size(); ++i)
        for (auto comparator : {"equal", "contains", "starts_with", "ends_with", "in"}) {
            auto id = std::to_string(i + 1);
            EXPECT_EQ(run(leaf("Company", comparator, ValueList{values[i]})), id) << comparator << " of value " << id;
        }
}

TEST_F(CustomViewCriteriaTest, WildcardsStandForThemselves) {
    store("Company", {"50% off", "now 50%", "%50 x", "x %50", "a 50 b", "\\50", "50\\", "%", "50", "a_x", "abx"});
    const std::array<const char*, 3> cases[] = {{"ends_with", "50%", "2"},
                                                {"starts_with", "%50", "3"},
                                                {"starts_with", "50%", "1"},
                                                {"ends_with", "%50", "4"},
                                                {"starts_with", "%", "3 8"},
                                                {"ends_with", "%", "2 8"},
                                                {"starts_with", "\\50", "6"},
                                                {"ends_with", "50\\", "7"},
                                                {"contains", "50%", "1 2"},
                                                {"contains", "%50", "3 4"},
                                                {"contains", "_x", "10"},
                                                {"not_contains", "_x", "1 2 3 4 5 6 7 8 9 11"},
                                                {"starts_with", "", "1 2 3 4 5 6 7 8 9 10 11"}};
    for (auto& [comparator, value, ids] : cases)
        EXPECT_EQ(run(leaf("Company", comparator, ValueList{value})), ids) << comparator << " " << value;
}

TEST_F(CustomViewCriteriaTest, ItemsOfListsCompareByTheTypeOfTheColumn) {
    store("Amount", {"10", "10.0", "9", "", nullptr, "x"});
    EXPECT_EQ(run(leaf("Amount", "in", ValueList{"10", 7})), "1 2");
    EXPECT_EQ(run(leaf("Amount", "in", "9,10.00")), "1 2 3");
    EXPECT_EQ(run(leaf("Amount", "in", ValueList{"9", "x"})), "3 6");
    EXPECT_EQ(run(leaf("Amount", "not_in", ValueList{"10", "x"})), "3");
    store("Company", {"10", "10.0", "a,b", "a"});
    EXPECT_EQ(run(leaf("Company", "in", ValueList{"10"})), "1") << "texts compare as texts";
    EXPECT_EQ(run(leaf("Company", "in", ValueList{"a,b"})), "3") << "a comma does not split an item";
}

/// Days that begin at a local midnight: 2024-06-25 in two zones, and the shorter day of a clock change.
TEST_F(CustomViewCriteriaTest, DatesOfCriteriaAreTheMomentsOfTheirDay) {
    const std::tuple<const char*, const char*, std::int64_t, std::int64_t> cases[] = {
        {"UTC", "2024-06-25", 1719273600, 1719359999},
        {"Asia/Kolkata", "2024-06-25", 1719253800, 1719340199},
        {"Europe/Berlin", "2024-03-31", 1711839600, 1711922399}};
    for (auto naming : {FieldIdentifier::fieldAPINameIdentifier(), FieldIdentifier::crmColumnNameIdentifier()})
        for (auto& [zone, day, first, last] : cases) {
            SCOPED_TRACE(zone);
            use(naming);
            platform::Clock::setTimeZone(zone);
            auto field = fields.getFieldByApiName("Created_Time");
            store(fields.identifierOf(*field), {first - 1, first, last, last + 1, "", nullptr});
            const std::pair<const char*, const char*> ids[] = {
                {"equal", "2 3"},      {"not_equal", "1 4"},    {"greater_equal", "2 3 4"},
                {"greater_than", "4"}, {"less_equal", "1 2 3"}, {"less_than", "1"},
                {"in", "2 3"},         {"not_in", "1 4"}};
            for (auto& [comparator, expected] : ids)
                EXPECT_EQ(run(leaf("Created_Time", comparator, day)), expected) << comparator;
        }
    use(FieldIdentifier::fieldAPINameIdentifier());
    store("Created_Time", {1719273599, 1719273600, 1719273601});
    EXPECT_EQ(run(leaf("Created_Time", "equal", "2024-06-25T00:00:00Z")), "2") << "a time is its second";
    EXPECT_EQ(run(leaf("Created_Time", "greater_than", "2024-06-25T05:30:00+05:30")), "3");
}

TEST_F(CustomViewCriteriaTest, TreesConnectAsWritten) {
    store("Company", {"a", "b", "c", "ab"});
    auto is = [](const char* text) { return Value(leaf("Company", "equal", text)); };
    EXPECT_EQ(run(ValueList{is("a"), "or", is("b")}), "1 2");
    EXPECT_EQ(run(ValueList{is("a"), "and", is("b")}), "");
    EXPECT_EQ(run(ValueList{leaf("Company", "contains", "a"), "and", ValueList{is("a"), "or", is("ab")}}), "1 4");
    EXPECT_EQ(run(nullptr), "1 2 3 4");
    EXPECT_EQ(run(ValueList{}), "1 2 3 4");
}

TEST_F(CustomViewCriteriaTest, LargeTreesRunOrAreRefused) {
    store("Company", {"v1999", "v7", "other"});
    auto oneOf = [](std::size_t i) { return Value(leaf("Company", "equal", "v" + std::to_string(i))); };
    ValueList chain{oneOf(0)};
    for (std::size_t i = 1; i < 2000; ++i) chain.emplace_back("or"), chain.push_back(oneOf(i));
    EXPECT_EQ(run(chain), "1 2");
    auto nested = [&](int depth) {
        Value node = oneOf(7);
        for (int i = 0; i < depth; ++i) node = ValueList{oneOf(i), i % 2 ? "or" : "and", node};
        return node;
    };
    EXPECT_EQ(run(nested(20)), "");
    EXPECT_EQ(run(nested(200)), "offlineNotSupported ");
    chain[1] = "and";
    EXPECT_EQ(run(chain), "offlineNotSupported ");
    EXPECT_EQ(run(leaf("Company", "equal", ValueList(2000, "x"))), "offlineNotSupported ");
}

TEST_F(CustomViewCriteriaTest, CriteriaThatCannotBeEvaluatedAreRefused) {
    auto good = leaf("Company", "equal", "a");
    auto listWith = [&](Value second, Value third) {
        return Value(ValueList{good, std::move(second), std::move(third)});
    };
    const Value onlyForServer[] = {leaf("Company", "between", "a"),
                                   leaf("Company", "sounds_like", "a"),
                                   leaf("Company", "equal", "a" + separator),
                                   ValueList{good, "and"},
                                   ValueList{good, good},
                                   listWith("; DROP TABLE LeadsRecords; --", good),
                                   listWith("and", 7),
                                   listWith("and", ValueList{}),
                                   7};
    for (auto& criteria : onlyForServer) EXPECT_EQ(run(criteria), "offlineNotSupported ");
    EXPECT_TRUE(wasLogged("Comparator is new (not specified in enum CustomViewComparator)"));
    EXPECT_EQ(run(leaf("Missing", "equal", "a")), "metadataNotFound Missing");
    auto view = viewOf(good);
    view.offlineQuery += " and {2} = '{3}'";
    EXPECT_EQ(run(view), "offlineNotSupported ") << "more placeholders than pieces";
    for (auto key : {"field", "value", "comparator"})
        for (auto& bad : {Value(), Value(ValueMap())}) {
            auto broken = good;
            broken.set(key, bad);
            EXPECT_FALSE(CustomViewOfflineQueryParser::compile(ValueList{good, "and", broken})) << key;
        }
}

TEST_F(CustomViewCriteriaTest, ActivitiesOfATypeAreViewsOfTheirModules) {
    for (auto& [value, comparator, modules] : {std::tuple(Value("Calls"), "equal", "Calls"),
                                               {ValueList{"Tasks", "Calls"}, "in", "Calls Tasks"},
                                               {"Calls", "not_equal", "Events Tasks"}}) {
        auto criteria = leaf("Activity_Type", comparator, value);
        EXPECT_FALSE(CustomViewOfflineQueryParser::compile(criteria)->moduleList);
        criteria.set("module", "Activities");
        EXPECT_EQ(text::join(CustomViewOfflineQueryParser::compile(criteria)->moduleList.value(), " "), modules);
    }
}

TEST_F(CustomViewCriteriaTest, TemplatesOfTheServerAreFilledToo) {
    configuration().serverCVCriteria = true;
    store("Company", {"it's", "x", "10"});
    CustomView view;
    view.isOfflineSupported = true;
    auto ids = [&](const std::string& query, const std::string& pieces) {
        view.offlineQuery = query;
        view.offlineQueryReplaceInfo = pieces;
        return run(view);
    };
    EXPECT_EQ(ids("({0} = '{1}' or {2} = '{3}')", "Company,x,Company,it's"), "1 2");
    EXPECT_EQ(ids("{0} like '%{1}%'", "Company,t's"), "1");
    EXPECT_EQ(ids("{0} = {1}", "Company,it's"), "1");
    EXPECT_EQ(ids("{0} in {1}", "Company,[x]"), "2");
    ValueList row{"1", "View", "View", "", "", "false", "true", "({0} = '{1}' or {2} = '{3}')"};
    row.push_back(ValueList{"Company", "Smith, Jones", "Company", "x"});
    ParsedPermissionInfo info;
    info.moduleName = "Leads";
    auto views = CVSyncParser().parseResult(ValueList(1, row), info).value();
    ASSERT_EQ(views.size(), 1u);
    store("Company", {"Smith", "Smith, Jones", "x", " Jones"});
    EXPECT_EQ(run(views.front()), "2 3") << "a comma inside a value does not split it";
}

}  // namespace
}  // namespace tarvo
