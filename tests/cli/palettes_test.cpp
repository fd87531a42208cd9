#include "cli/palettes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/support.h"

namespace velamo {
namespace {

using test::call;

TEST(Palettes, AreListedWithTheirColors) {
    const auto outcome = call({"palettes"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out,
                testing::StartsWith("Brother Embroidery (Brother, 64 colors)\n  007  #0E1F7C  Prussian Blue\n"));
    EXPECT_THAT(outcome.out, testing::HasSubstr("\n\nJanome Embroidery (Janome, "));
}

TEST(Palettes, AreListedAsJson) {
    const auto json = call({"palettes", "--json"}).json();
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(json[0]["name"], "Brother");
    EXPECT_EQ(json[0]["displayName"], "Brother Embroidery");
    EXPECT_EQ(json[0]["count"], json[0]["colors"].size());
    EXPECT_EQ(json[0]["colors"][0]["key"], "007");
    EXPECT_EQ(json[0]["colors"][0]["name"], "Prussian Blue");
    EXPECT_EQ(json[0]["colors"][0]["color"][0].get<float>(), 14 / 255.0F);
    EXPECT_EQ(json[1]["name"], "Janome");
}

}  // namespace
}  // namespace velamo
