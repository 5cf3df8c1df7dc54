#include "platform/Value.h"

#include <gmock/gmock.h>

#include <thread>

namespace tarvo::platform::testing {

struct Point final : ValueObject {
    explicit Point(int x) : x(x) {}
    bool equals(const ValueObject& other) const override {
        auto point = dynamic_cast<const Point*>(&other);
        return point && point->x == x;
    }
    std::string_view typeName() const override { return "Point"; }
    int x;
};

TEST(Value, EqualityIsStrictByKind) {
    // Every value equals itself and its copy and no other of the list.
    const Value values[] = {
        std::shared_ptr<const ValueObject>(std::make_shared<Point>(1)),
        std::shared_ptr<const ValueObject>(std::make_shared<Point>(2)),
        {},
        false,
        true,
        0,
        1,
        1.0,
        "",
        "1",
        Bytes{"1"},
        Bytes{},
        ValueList{},
        ValueList{1},
        ValueList{1.0},
        ValueMap{},
        ValueMap{{"a", 1}},
        ValueMap{{"a", nullptr}},
    };
    for (std::size_t i = 0; i < std::size(values); ++i)
        for (std::size_t j = 0; j < std::size(values); ++j) {
            Value copy = values[j];
            EXPECT_EQ(values[i] == copy, i == j) << i << " and " << j;
        }
    EXPECT_EQ(Value(std::shared_ptr<const ValueObject>(std::make_shared<Point>(1))), values[0]);
    EXPECT_TRUE(Value(std::shared_ptr<const ValueObject>()).isNull());
    EXPECT_EQ(Value(ValueMap{{"a", 1}, {"b", 2}}), Value(ValueMap{{"b", 2}, {"a", 1}}));
}

TEST(Value, AChangeOfACopyLeavesTheOthersAlone) {
    Value original = ValueMap{{"list", ValueList{1, ValueMap{{"deep", 1}}}}};
    Value copy = original;
    auto& list = *(*copy.mutableMap())["list"].mutableList();
    (*list[1].mutableMap())["deep"] = 2;
    list.push_back(3);
    EXPECT_EQ(original, Value(ValueMap{{"list", ValueList{1, ValueMap{{"deep", 1}}}}}));
    EXPECT_EQ(copy, Value(ValueMap{{"list", ValueList{1, ValueMap{{"deep", 2}}, 3}}}));
    EXPECT_EQ(Value(1).mutableList(), nullptr);
}

TEST(Value, ACopyReadElsewhereDoesNotSeeTheOwnersChange) {
    for (int round = 0; round < 200; ++round) {
        Value owner = ValueList{1, 2, 3};
        std::jthread reader([copy = owner]() mutable {
            EXPECT_EQ(copy.asList()->size(), 3u);
            copy = {};
        });
        owner.mutableList()->push_back(4);
        EXPECT_EQ(owner.asList()->size(), 4u);
    }
}

std::vector<std::string> names(const ValueMap& map) {
    std::vector<std::string> all;
    for (auto& entry : map) all.push_back(entry.name);
    return all;
}

TEST(ValueMap, KeepsTheOrderOfInsertionThroughGrowthAndRemoval) {
    ValueMap map;
    std::vector<std::string> expected;
    for (int i = 0; i < 300; ++i) {
        auto name = "name" + std::to_string(i * 7919 % 1000);
        map.set(name, i);
        expected.push_back(name);
        ASSERT_EQ(map.find(name)->asInteger(), i);
    }
    map.set(expected[5], "again");
    ASSERT_EQ(names(map), expected);
    // Down through the limit where the index ends, taking from everywhere.
    for (std::size_t i = 0; expected.size() > 3; i = (i + 11) % expected.size()) {
        ASSERT_TRUE(map.remove(expected[i]));
        ASSERT_FALSE(map.remove(expected[i]));
        expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(i));
        ASSERT_EQ(names(map), expected);
        for (auto& name : expected) ASSERT_TRUE(map.contains(name));
    }
    map.clear();
    EXPECT_FALSE(map.contains("name0"));
    map["name0"] = 1;
    EXPECT_EQ(names(map), std::vector<std::string>{"name0"});
}

}  // namespace tarvo::platform::testing
