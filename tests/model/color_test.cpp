#include "velamo/model/color.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace velamo {
namespace {

TEST(Color, OfNoArgumentsIsLightGrey) {
    const VLMColor grey;
    EXPECT_EQ(grey.red(), 0.8);
    EXPECT_EQ(grey.green(), 0.8);
    EXPECT_EQ(grey.blue(), 0.8);
    EXPECT_EQ(grey.description(), "RGB color (204 / 204 / 204)");
}

TEST(Color, KeepsItsComponentsUnclamped) {
    const auto color = VLMColor::initWithRedgreenblue(-1.5, 0.25, 7);
    EXPECT_EQ(color.red(), -1.5);
    EXPECT_EQ(color.green(), 0.25);
    EXPECT_EQ(color.blue(), 7.0);
    EXPECT_EQ(color.copy(), color);
}

TEST(Color, DiffersByAnyBit) {
    const auto color = VLMColor::initWithRedgreenblue(0.5, 0.5, 0.5);
    const auto next = VLMColor::initWithRedgreenblue(0.5, std::nextafter(0.5, 1.0), 0.5);
    EXPECT_TRUE(color.isEqual(VLMColor::initWithRedgreenblue(0.5, 0.5, 0.5)));
    EXPECT_FALSE(color.isEqual(next));
}

struct HashRow {
    const char* name;
    VLMColor color;
    std::uint64_t hash;
};
class ColorHashes : public testing::TestWithParam<HashRow> {};
TEST_P(ColorHashes, PackTheComponents) {
    EXPECT_EQ(GetParam().color.hash(), GetParam().hash);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ColorHashes,
    testing::Values(HashRow{"Black", VLMColor::initWithRedgreenblue(0, 0, 0), 0},
                    HashRow{"Red", VLMColor::initWithRedgreenblue(1, 0, 0), 255000000},
                    HashRow{"Mixed", VLMColor::initWithRedgreenblue(17 / 255.0, 34 / 255.0, 51 / 255.0), 17034051},
                    HashRow{"TruncatedTowardZero", VLMColor::initWithRedgreenblue(0, 0, 0.5), 127},
                    HashRow{"Negative", VLMColor::initWithRedgreenblue(0, 0, -0.5), std::uint64_t(-127)},
                    HashRow{"PastTheSignedNumbers", VLMColor::initWithRedgreenblue(40000000000.0, 0, 0),
                            10200000000000000000U},
                    HashRow{"PastAllNumbers", VLMColor::initWithRedgreenblue(1e300, 0, 0), std::uint64_t{1} << 63},
                    HashRow{"NoNumber", VLMColor::initWithRedgreenblue(std::numeric_limits<double>::quiet_NaN(), 0, 0),
                            std::uint64_t{1} << 63}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
