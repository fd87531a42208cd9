#include "velamo/model/thread.h"

#include <gtest/gtest.h>

#include <cmath>

#include "velamo/model/color_list.h"
#include "velamo/model/design.h"

namespace velamo {
namespace {

VLMColor ofBytes(int red, int green, int blue) {
    return VLMColor::initWithRedgreenblue(red / 255.0, green / 255.0, blue / 255.0);
}

TEST(Thread, TakesItsFiveValues) {
    const auto color = VLMColor::initWithRedgreenblue(0.1, 0.2, 0.3);
    const auto thread = VLMThread::initWithColorandNameforKeyofPalettewithName(color, "Rose", "7", "P", "Palette P");
    EXPECT_EQ(thread.color(), color);
    EXPECT_EQ(thread.name(), "Rose");
    EXPECT_EQ(thread.key(), "7");
    EXPECT_EQ(thread.palette(), "P");
    EXPECT_EQ(thread.paletteName(), "Palette P");
    EXPECT_EQ(thread.length(), 0.0F);
    EXPECT_EQ(thread.tension(), 13);
    EXPECT_TRUE(thread.isShown());
}

TEST(Thread, SharesItsLookWithCopiesUntilOneIsChanged) {
    const auto red = VLMColor::initWithRedgreenblue(1, 0, 0);
    const auto blue = VLMColor::initWithRedgreenblue(0, 0, 1);
    const auto thread = VLMThread::initWithColorandNameforKeyofPalettewithName(red, "Rose", "7", "P", "Palette P");
    VLMThread copy = thread.copy();
    copy.setTension(5);
    copy.addLength(2);
    EXPECT_TRUE(copy.sharesLookWith(thread));
    copy.setColor(blue);
    EXPECT_FALSE(copy.sharesLookWith(thread));
    EXPECT_EQ(copy.color(), blue);
    EXPECT_EQ(thread.color(), red);
    copy.setName("Sea");
    EXPECT_EQ(copy.name(), "Sea");
    EXPECT_EQ(copy.key(), "7");
    EXPECT_EQ(thread.name(), "Rose");
}

TEST(Thread, IsBlackWithoutTextsUntilItIsChanged) {
    VLMThread thread;
    EXPECT_EQ(thread.color(), VLMColor::initWithRedgreenblue(0, 0, 0));
    EXPECT_EQ(thread.paletteName(), std::nullopt);
    thread.setPaletteName("Palette P");
    EXPECT_EQ(thread.color(), VLMColor::initWithRedgreenblue(0, 0, 0));
    EXPECT_EQ(thread.paletteName(), "Palette P");
    EXPECT_EQ(thread.name(), std::nullopt);
}

TEST(Thread, MayBeRecolouredByItsOwnColour) {
    VLMThread thread;
    thread.setColor(VLMColor::initWithRedgreenblue(1, 0.5, 0));
    thread.changeToColorinPalette(thread.color(), "");
    EXPECT_EQ(thread.color(), VLMColor::initWithRedgreenblue(1, 0.5, 0));
    EXPECT_EQ(thread.name(), "Individual color (255, 128, 0)");
}

TEST(Thread, OfAPalettesKeyHasItsColourAndNames) {
    const auto thread = VLMThread::initWithKeyofPalette("019", "Brother");
    EXPECT_EQ(thread.color(),
              VLMColor::initWithRedgreenblue(float(37 / 255.0), float(132 / 255.0), float(187 / 255.0)));
    EXPECT_EQ(thread.name(), "Sky Blue");
    EXPECT_EQ(thread.key(), "019");
    EXPECT_EQ(thread.palette(), "Brother");
    EXPECT_EQ(thread.paletteName(), "Brother Embroidery");
    EXPECT_EQ(thread.tension(), 13);
    EXPECT_TRUE(thread.isShown());
}

struct UnknownRow {
    const char* name;
    Text key;
    Text palette;
};
class UnknownThreads : public testing::TestWithParam<UnknownRow> {};
TEST_P(UnknownThreads, AreGreyWithTheirKeyAndPalette) {
    const auto thread = VLMThread::initWithKeyofPalette(GetParam().key, GetParam().palette);
    EXPECT_EQ(thread.color(), VLMColor());
    EXPECT_EQ(thread.name(), "Individual color (204, 204, 204)");
    EXPECT_EQ(thread.key(), GetParam().key);
    EXPECT_EQ(thread.palette(), GetParam().palette);
    EXPECT_EQ(thread.paletteName(), "");
}
INSTANTIATE_TEST_SUITE_P(Rows, UnknownThreads,
                         testing::Values(UnknownRow{"UndefinedPalette", "1", "Undefined"},
                                         UnknownRow{"UnknownKey", "nowhere", "Brother"},
                                         UnknownRow{"AbsentKey", std::nullopt, "Brother"},
                                         UnknownRow{"AbsentPalette", "1", std::nullopt},
                                         UnknownRow{"PaletteThatLeadsElsewhere", "1", "../Brother"}),
                         [](const auto& row) { return row.param.name; });

TEST(Recolouring, FreeColourKeepsItsExactComponents) {
    auto thread = VLMThread::initWithKeyofPalette("019", "Brother");
    const auto color = VLMColor::initWithRedgreenblue(0.123456789, 0.5, 1.0);
    EXPECT_TRUE(thread.changeToColorinPalette(color, ""));
    EXPECT_EQ(thread.color(), color);
    EXPECT_EQ(thread.name(), "Individual color (31, 128, 255)");
    EXPECT_EQ(thread.key(), "");
    EXPECT_EQ(thread.palette(), "");
    EXPECT_EQ(thread.paletteName(), "Threadcolors");
}

TEST(Recolouring, ExactColourIsFound) {
    const auto palette = paletteNamed("Brother");
    for (const auto& key : palette->allSortedKeys()) {
        auto thread = VLMThread::initWithKeyofPalette("007", "Brother");
        EXPECT_TRUE(thread.changeToColorinPalette(*palette->colorWithKey(key), "Brother"));
        EXPECT_EQ(thread.key(), key);
        EXPECT_EQ(thread.color(), *palette->colorWithKey(key));
    }
}

TEST(Recolouring, SpecialKeysAreForThreadsOfThePaletteOnly) {
    const auto applique = *paletteNamed("Brother")->colorWithKey("x9");
    auto fromOutside = VLMThread::initWithKeyofPalette("002", "Janome");
    EXPECT_TRUE(fromOutside.changeToColorinPalette(applique, "Brother"));
    EXPECT_EQ(fromOutside.key(), "214");  // the nearest sewing thread
    EXPECT_EQ(fromOutside.name(), "Deep Gold");
    auto fromInside = VLMThread::initWithKeyofPalette("007", "Brother");
    EXPECT_TRUE(fromInside.changeToColorinPalette(applique, "Brother"));
    EXPECT_EQ(fromInside.key(), "x9");
    // The thread belongs to the palette now, so a second change from what was outside may take it.
    EXPECT_TRUE(fromOutside.changeToColorinPalette(applique, "Brother"));
    EXPECT_EQ(fromOutside.key(), "x9");
}

/// The nearest key by the formula as it stands on paper, with the powers of the standard library.
std::string nearestByFormula(const VLMColor& wanted, const VLMColorList& palette) {
    std::string best;
    double bestDistance = 32767.0;
    for (const auto& key : palette.allSortedKeys()) {
        if (key[0] == 'x') continue;
        const VLMColor& offered = *palette.colorWithKey(key);
        const double red = (wanted.red() - offered.red()) * 255;
        const double green = (wanted.green() - offered.green()) * 255;
        const double blue = (wanted.blue() - offered.blue()) * 255;
        const double mean = (offered.red() + wanted.red()) * 255 * 0.5;
        const double distance = std::sqrt((mean * 0.00390625 + 2) * std::pow(red, 2) + 4 * std::pow(green, 2) +
                                          ((255 - red) * 0.00390625 + 2) * std::pow(blue, 2));
        if (distance < bestDistance) {
            bestDistance = distance;
            best = key;
        }
    }
    return best;
}

TEST(Recolouring, TakesTheNearestColour) {
    for (int red = 0; red < 256; red += 15)
        for (int green = 0; green < 256; green += 15)
            for (int blue = 0; blue < 256; blue += 15) {
                auto thread = VLMThread::initWithKeyofPalette("002", "Janome");
                EXPECT_TRUE(thread.changeToColorinPalette(ofBytes(red, green, blue), "Brother"));
                EXPECT_EQ(thread.key(), nearestByFormula(ofBytes(red, green, blue), *paletteNamed("Brother")));
            }
}

TEST(Recolouring, WeighsBlueByTheDifferenceOfReds) {
    // By the mean of reds, as elsewhere, it would be Light Lilac, 810.
    auto thread = VLMThread::initWithKeyofPalette("002", "Janome");
    EXPECT_TRUE(thread.changeToColorinPalette(ofBytes(204, 153, 255), "Brother"));
    EXPECT_EQ(thread.key(), "804");
    EXPECT_EQ(thread.name(), "Lavender");
}

TEST(Recolouring, MissingPaletteIsEmptyAndGivesGrey) {
    auto thread = VLMThread::initWithKeyofPalette("019", "Brother");
    EXPECT_TRUE(thread.changeToColorinPalette(ofBytes(1, 2, 3), "Nowhere"));
    EXPECT_EQ(thread.color(), VLMColor());
    EXPECT_EQ(thread.key(), "");
    EXPECT_EQ(thread.name(), "");
    EXPECT_EQ(thread.palette(), "Nowhere");
    EXPECT_EQ(thread.paletteName(), "Threadcolors");
}

TEST(Recolouring, PaletteThatCannotBeLeavesTheThreadAlone) {
    auto thread = VLMThread::initWithKeyofPalette("019", "Brother");
    const auto before = thread;
    EXPECT_FALSE(thread.changeToColorinPalette(ofBytes(1, 2, 3), "../Brother"));
    EXPECT_EQ(thread, before);
}

TEST(Recolouring, OfADesignsThreadGoesByIndex) {
    VLMDesign design;
    design.setThreads(
        {VLMThread::initWithKeyofPalette("1", "Undefined"), VLMThread::initWithKeyofPalette("2", "Undefined")});
    EXPECT_TRUE(design.changeThreadtoColorinPalette(1, ofBytes(0, 0, 0), "Brother"));
    EXPECT_EQ(design.threads()[0].key(), "1");
    EXPECT_EQ(design.threads()[1].key(), "900");
    EXPECT_THROW(design.changeThreadtoColorinPalette(2, VLMColor(), ""), std::out_of_range);
    EXPECT_THROW(design.changeThreadtoColorinPalette(-1, VLMColor(), ""), std::out_of_range);
}

TEST(Thread, AddsLengthsInSinglePrecision) {
    VLMThread thread;
    thread.addLength(0.1F);
    thread.addLength(0.2F);
    EXPECT_EQ(thread.length(), 0.1F + 0.2F);
}

TEST(Thread, DescribesItself) {
    auto thread = VLMThread::initWithKeyofPalette("900", "Brother");
    thread.setLength(12.25F);
    thread.setTension(-3);
    EXPECT_EQ(thread.description(),
              "Embroidery Thread: color=RGB color (0 / 0 / 0) of palette Brother Embroidery, name=Black, key=900, "
              "length=12.2, tension=-3");
    EXPECT_EQ(VLMThread().description(),
              "Embroidery Thread: color=RGB color (0 / 0 / 0) of palette (null), name=(null), key=(null), length=0.0, "
              "tension=0");
}

TEST(Thread, CopyChangesOnItsOwn) {
    const auto thread = VLMThread::initWithKeyofPalette("900", "Brother");
    auto copy = thread.copy();
    copy.setName("Night");
    copy.setKey(std::nullopt);
    copy.setPalette("P");
    copy.setPaletteName("Palette P");
    EXPECT_EQ(copy.name(), "Night");
    EXPECT_EQ(copy.key(), std::nullopt);
    EXPECT_EQ(copy.palette(), "P");
    EXPECT_EQ(copy.paletteName(), "Palette P");
    EXPECT_EQ(thread, VLMThread::initWithKeyofPalette("900", "Brother"));
    EXPECT_NE(thread, copy);
}

TEST(Thread, CopyHasEveryField) {
    auto thread = VLMThread::initWithKeyofPalette("900", "Brother");
    thread.setLength(3);
    thread.setTension(5);
    thread.setIsShown(false);
    EXPECT_EQ(thread.copy(), thread);
}

}  // namespace
}  // namespace velamo
