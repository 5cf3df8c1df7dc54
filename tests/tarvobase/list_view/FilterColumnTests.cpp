#include "platform/Text.h"
#include "tarvobase/list_view/GetFilters.h"
#include "tarvobase/records/sql/FilterToWhereConverter.h"
#include "tests/tarvobase/records/sql/FilterFixture.h"

namespace tarvo {
namespace {

ColumnFilter filter(FilterType type, std::vector<std::string> inputs, const std::string& column = "Company") {
    return {.filerName = {}, .column = column, .filterInputValues = std::move(inputs), .filterType = type};
}

class FilterColumnTest : public FilterTest {
protected:
    std::string run(const ColumnFilter& one) {
        auto plain = FilterToWhereConverter::getWhereStatement(one);
        auto qualified = FilterToWhereConverter::getWhereStatement(one, "Leads");
        if (!plain) return "none";
        auto ids = idsWhere(*plain);
        EXPECT_EQ(idsWhere(*qualified), ids) << *qualified;
        return ids;
    }
};

TEST_F(FilterColumnTest, EveryComparatorFindsItsRows) {
    using C = CommonFilterType;
    using N = NumberFilterTypes;
    using S = StringFilterTypes;
    using Case = std::pair<ColumnFilter, const char*>;
    const Case texts[] = {
        {filter(C::isEmpty, {}), "5 6"},
        {filter(C::isNotEmpty, {}), "1 2 3 4"},
        {filter(S::isExactly, {"acme"}), "1"},
        {filter(S::isExactly, {"[\"Acme\", \"Zylker\"]"}), "1 3"},
        {filter(S::isExactly, {"\"Acme\", \"Zylker\""}), "1 3"},
        {filter(S::isExactly, {"a#TarvoSeparator#b"}), "4"},
        {filter(S::isnt, {"Acme"}), "2 3 4 6"},
        {filter(S::isnt, {"[\"Acme\", \"Zylker\"]"}), "2 4 6"},
        {filter(S::contains, {"acme"}), "1 2"},
        {filter(S::doesntContain, {"acme"}), "3 4 6"},
        {filter(S::beginsWith, {"acme"}), "1"},
        {filter(S::endsWith, {"acme"}), "1 2"},
        {filter(S::contains, {}), "none"},
    };
    store("Company", {"Acme", "The Acme", "Zylker", "a,b", nullptr, ""});
    for (auto& [filter, ids] : texts) EXPECT_EQ(run(filter), ids);

    store("Amount", {"2", "10", "9.5", "", nullptr});
    const Case numbers[] = {
        {filter(N::equalTo, {"10"}, "Amount"), "2"},        {filter(N::notEqualTo, {"10"}, "Amount"), "1 3"},
        {filter(N::greaterThan, {"9"}, "Amount"), "2 3"},   {filter(N::greaterThanEqualTo, {"9.5"}, "Amount"), "2 3"},
        {filter(N::lesserThan, {" 9.5 "}, "Amount"), "1"},  {filter(N::lesserThanEqualTo, {"9.5"}, "Amount"), "1 3"},
        {filter(N::equalTo, {"1) or (1=1"}, "Amount"), ""}, {filter(N::equalTo, {}, "Amount"), "none"},
    };
    for (auto& [filter, ids] : numbers) EXPECT_EQ(run(filter), ids);
}

TEST_F(FilterColumnTest, AnyTextMeansItself) {
    using S = StringFilterTypes;
    ValueList values{"5\" pipe 6\"", "\"Acme\" x"};
    for (auto& text : difficultTexts()) values.push_back(text);
    for (std::string column : {"Company", "$status"}) {
        store(column, values);
        for (std::size_t i = 0; i < values.size(); ++i)
            for (auto type : {S::isExactly, S::contains, S::beginsWith, S::endsWith})
                EXPECT_EQ(run(filter(type, {*values[i].asText()}, column)), std::to_string(i + 1)) << caseName(type);
    }
}

TEST_F(FilterColumnTest, ListsSkipFiltersWithoutInput) {
    store("Company", {"ab", "ac", "b"});
    auto where = [&](const std::vector<ColumnFilter>& filters) {
        return FilterToWhereConverter::getWhereStatement(filters);
    };
    auto without = filter(StringFilterTypes::contains, {});
    EXPECT_EQ(where({}), std::nullopt);
    EXPECT_EQ(where({without, filter(DateFilterTypes::on, {"soon"})}), std::nullopt);
    EXPECT_TRUE(wasLogged("Illegal filter input"));
    EXPECT_EQ(idsWhere(*where(
                  {filter(StringFilterTypes::beginsWith, {"a"}), without, filter(StringFilterTypes::endsWith, {"b"})})),
              "1");
}

TEST_F(FilterColumnTest, InputsOfAFormFindTheirRows) {
    auto offered = GetFilters::getFilters("Status", fields);
    ASSERT_EQ(offered.size(), 4u);
    store("Status", {"Open", "Won, lost", "Closed"});
    offered[0].setInput(ValueList{Value(ValueList{"Open", "Won, lost"})});
    EXPECT_EQ(run(offered[0]), "1 2");
    offered[1].setInput({"Open"});
    EXPECT_EQ(run(offered[1]), "2 3");
    EXPECT_TRUE(GetFilters::getFilters("Missing", fields).empty());
}

}  // namespace
}  // namespace tarvo
