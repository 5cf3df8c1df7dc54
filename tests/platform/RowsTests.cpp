#include "platform/Rows.h"

#include <gmock/gmock.h>

namespace tarvo::platform::testing {

Rows sample() {
    Rows::Builder builder({"id", "name", "id", "photo", ""});
    builder.addInteger(1);
    builder.addText("first");
    builder.addReal(1.5);
    builder.addBytes(std::string_view("\0\x01", 2));
    builder.addNull();
    builder.addNull();
    builder.addText("");
    builder.addInteger(2);
    builder.addNull();
    builder.addText("last");
    return builder.finish();
}

TEST(Rows, ReadsCellsByNameAndTheLastOfEqualNames) {
    auto rows = sample();
    ASSERT_EQ(rows.size(), 2u);
    auto row = rows[0];
    EXPECT_EQ(row.valueOf("name"), Value("first"));
    EXPECT_EQ(row.valueOf("id"), Value(1.5));
    EXPECT_EQ(row.valueOf("photo"), Value(Bytes{std::string("\0\x01", 2)}));
    EXPECT_TRUE(row.contains("") && row.find("")->isNull());
    EXPECT_FALSE(row.contains("nam") || row.contains("names"));
    EXPECT_EQ(rows[1].valueOf("name"), Value(""));
    EXPECT_EQ(rows[1].valueOf("missing"), Value());
    // As a map: equal names once, at the place of the first with the value of the last.
    EXPECT_EQ(rows.toMaps()[1], (ValueMap{{"id", 2}, {"name", ""}, {"photo", nullptr}, {"", "last"}}));
}

TEST(Rows, ARowKeepsItsBlockAlive) {
    Row row = sample()[1];
    EXPECT_EQ(row.find("")->asText(), "last");
    EXPECT_EQ(row.number(), 1u);
}

}  // namespace tarvo::platform::testing
