#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>

#include "velamo/platform/text/resources.h"

namespace velamo {
namespace {

using testing::IsSupersetOf;

using Bytes = std::array<int, 3>;

struct Color {
    std::array<float, 3> components;
    std::string key;

    [[nodiscard]] Bytes bytes() const {
        Bytes rounded{};
        for (std::size_t i = 0; i < rounded.size(); ++i)
            rounded[i] = static_cast<int>(std::lround(components[i] * 255.0));
        return rounded;
    }
};

std::vector<Color> shippedColors(const std::string& palette) {
    const Resources resources(resourceFolders(), {});
    std::ifstream file(resources.find(std::filesystem::path(palette + ".clr") / (palette + ".clr")));
    std::string line;
    std::getline(file, line);
    EXPECT_EQ(line, "index red green blue alpha key");
    std::vector<Color> colors;
    while (std::getline(file, line)) {
        std::istringstream fields(line);
        std::size_t index = 0;
        double alpha = 0;
        Color color;
        fields >> index >> color.components[0] >> color.components[1] >> color.components[2] >> alpha >> color.key;
        EXPECT_TRUE(fields && fields.eof()) << line;
        EXPECT_EQ(index, colors.size() + 1) << line;
        EXPECT_EQ(alpha, 1.0) << line;
        colors.push_back(color);
    }
    return colors;
}

std::map<std::string, Bytes> bytesByKey(const std::string& palette) {
    std::map<std::string, Bytes> bytes;
    for (const Color& color : shippedColors(palette)) bytes[color.key] = color.bytes();
    return bytes;
}

class ShippedPalette : public testing::TestWithParam<const char*> {};

TEST_P(ShippedPalette, HasComponentsThatAreTheFloatsNearestToTheirBytes) {
    for (const Color& color : shippedColors(GetParam())) {
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(color.components[i], static_cast<float>(color.bytes()[i] / 255.0)) << color.key;
        }
    }
}

TEST_P(ShippedPalette, HasEveryKeyOnce) {
    EXPECT_EQ(bytesByKey(GetParam()).size(), shippedColors(GetParam()).size());
}

TEST_P(ShippedPalette, HasANameForEveryKeyInBothLanguages) {
    for (const char* language : {"en", "de"}) {
        const Resources resources(resourceFolders(), {language});
        for (const Color& color : shippedColors(GetParam())) {
            EXPECT_NE(resources.text(color.key, GetParam(), "missing"), "missing") << language << ' ' << color.key;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Palettes, ShippedPalette, testing::Values("Brother", "Janome"));

TEST(ShippedPalettes, HoldTheChartsColors) {
    const auto brother = bytesByKey("Brother");
    EXPECT_EQ(brother.size(), 64U);
    EXPECT_THAT(brother, IsSupersetOf(std::map<std::string, Bytes>{{"007", {14, 31, 124}},
                                                                   {"900", {0, 0, 0}},
                                                                   {"001", {240, 240, 240}},
                                                                   {"x9", {255, 153, 0}},
                                                                   {"x8", {255, 240, 141}},
                                                                   {"x7", {255, 200, 200}}}));
    const auto janome = bytesByKey("Janome");
    EXPECT_EQ(janome.size(), 78U);
    EXPECT_EQ(janome.count("x9"), 0U);
    EXPECT_THAT(janome,
                IsSupersetOf(std::map<std::string, Bytes>{
                    {"002", {0, 0, 0}}, {"001", {255, 255, 255}}, {"225", {255, 0, 0}}, {"224", {227, 190, 129}}}));
}

TEST(ShippedPalettes, KeepTheOrderOfTheCharts) {
    EXPECT_EQ(shippedColors("Brother").front().key, "007");
    EXPECT_EQ(shippedColors("Brother").back().key, "x7");
    EXPECT_EQ(shippedColors("Janome").front().key, "002");
    EXPECT_EQ(shippedColors("Janome").back().key, "224");
}

TEST(ShippedPalettes, HaveNames) {
    const Resources english(resourceFolders(), {"en"});
    EXPECT_EQ(english.text("Brother", "Brother", "-"), "Brother Embroidery");
    EXPECT_EQ(english.text("Janome", "Janome", "-"), "Janome Embroidery");
    EXPECT_EQ(english.text("007", "Brother", "-"), "Prussian Blue");
    EXPECT_EQ(english.text("x9", "Brother", "-"), "Applique Material");
    const Resources german(resourceFolders(), {"de"});
    EXPECT_EQ(german.text("Brother", "Brother", "-"), "Brother Stickgarn");
    EXPECT_EQ(german.text("Janome", "Janome", "-"), "Janome Stickgarn");
    EXPECT_EQ(german.text("007", "Brother", "-"), "Preu\u00DFischblau");
}

}  // namespace
}  // namespace velamo
