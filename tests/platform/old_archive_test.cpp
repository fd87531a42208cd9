#include "velamo/platform/plist/old_archive.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/support/bytes.h"

namespace velamo {
namespace {

using test::bytes;
using test::Bytes;
using Color = std::array<double, 3>;

Bytes from(std::size_t place, const Bytes& whole) {
    return {whole.begin() + static_cast<std::ptrdiff_t>(place), whole.end()};
}

const Bytes header = bytes(0x04, 0x0B, "streamtyped", 0x81, 0xE8, 0x03, 0x84, 0x01, "@");
const Bytes colorHead = bytes(0x84, 0x84, 0x84, 0x07, "NSColor", 0, 0x84, 0x84, 0x08, "NSObject", 0, 0x85);
const Bytes start = bytes(header, colorHead, 0x84, 0x01, "c");
const Bytes fourFloats = bytes(0x84, 0x04, "ffff");
const Bytes twoFloats = bytes(0x84, 0x02, "ff");
const Bytes half = bytes(0x83, 0, 0, 0, 0x3F);
const Bytes quarter = bytes(0x83, 0, 0, 0x80, 0x3E);
const Bytes infinite = bytes(0x83, 0, 0, 0x80, 0x7F);
const Bytes notANumber = bytes(0x83, 0, 0, 0xC0, 0x7F);
const Bytes whole = bytes(start, 1, fourFloats, half, quarter, 0, 1, 0x86);

struct Row {
    const char* name;
    Bytes archive;
    std::optional<Color> color;
};
class OldArchive : public testing::TestWithParam<Row> {};
TEST_P(OldArchive, GivesTheRow) {
    EXPECT_EQ(colorFromOldArchive(GetParam().archive), GetParam().color);
}

INSTANTIATE_TEST_SUITE_P(
    Colors, OldArchive,
    testing::Values(Row{"CalibratedRgb", whole, Color{0.5, 0.25, 0}},
                    Row{"DeviceRgb", bytes(start, 2, fourFloats, 1, 0, half, half, 0x86), Color{1, 0, 0.5}},
                    Row{"CalibratedWhite", bytes(start, 3, twoFloats, quarter, 1, 0x86), Color{0.25, 0.25, 0.25}},
                    Row{"DeviceWhite", bytes(start, 4, twoFloats, 1, half, 0x86), Color{1, 1, 1}},
                    Row{"FloatKeepsItsBits", bytes(start, 1, fourFloats, 0x83, 0xCD, 0xCC, 0xCC, 0x3D, 0, 0, 1, 0x86),
                        Color{static_cast<double>(0.1F), 0, 0}},
                    Row{"NegativeWholeComponent", bytes(start, 1, fourFloats, 0xFF, 0, 0, 1, 0x86), Color{-1, 0, 0}},
                    Row{"WiderWholeComponents", bytes(start, 1, fourFloats, 0x81, 1, 0, 0x82, 2, 0, 0, 0, 0, 1, 0x86),
                        Color{1, 2, 0}},
                    Row{"TypeMetBefore",
                        bytes(header, 0x84, 0x84, 0x84, 0x07, "NSColor", 0, 0x84, 0x84, 0x01, "c", 0, 0x85, 0x94, 1,
                              fourFloats, half, quarter, 0, 1, 0x86),
                        Color{0.5, 0.25, 0}},
                    Row{"BigEndian",
                        bytes(0x04, 0x0B, "typedstream", 0x81, 0x03, 0xE8, 0x84, 0x01, "@", colorHead, 0x84, 0x01, "c",
                              1, fourFloats, 0x83, 0x3F, 0, 0, 0, 0, 1, 1, 0x86),
                        Color{0.5, 0, 1}},
                    Row{"BytesBehindTheObject", bytes(whole, 1, 2, 3), Color{0.5, 0.25, 0}}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Refused, OldArchive,
    testing::Values(
        Row{"Nothing", {}, {}}, Row{"OtherStreamVersion", bytes(0x03, from(1, whole)), {}},
        Row{"OtherMark", bytes(0x04, 0x0B, "streamtypes", from(13, whole)), {}},
        Row{"OtherSystemVersion", bytes(0x04, 0x0B, "streamtyped", 0x81, 0xE7, 0x03, from(16, whole)), {}},
        Row{"OtherClass",
            bytes(header, 0x84, 0x84, 0x84, 0x07, "NSColon", 0, 0x85, 0x84, 0x01, "c", 1, fourFloats, 0, 0, 0, 1, 0x86),
            {}},
        Row{"NilObject", bytes(header, 0x85), {}},
        Row{"OtherType", bytes(header, colorHead, 0x84, 0x01, "i", 1, fourFloats, 0, 0, 0, 1, 0x86), {}},
        Row{"Cmyk", bytes(start, 5, 0x84, 0x05, "fffff", 0, 0, 0, 0, 1, 0x86), {}},
        Row{"NamedColor", bytes(start, 6, 0x84, 0x03, "@@@", 0x85, 0x85, 0x85, 0x86), {}},
        Row{"ComponentsOfTheOtherSpace", bytes(start, 1, twoFloats, 0, 1, 0x86), {}},
        Row{"Infinite", bytes(start, 1, fourFloats, infinite, 0, 0, 1, 0x86), {}},
        Row{"NotANumber", bytes(start, 3, twoFloats, notANumber, 1, 0x86), {}},
        Row{"OpacityNotANumber", bytes(start, 3, twoFloats, 1, notANumber, 0x86), {}},
        Row{"NoEndOfObject", bytes(start, 1, fourFloats, 0, 0, 0, 1, 0x85), {}},
        Row{"NilAsComponent", bytes(start, 1, fourFloats, 0x85, 0, 0, 1, 0x86), {}},
        Row{"TextNotMetBefore", bytes(header, colorHead, 0x96, 1, fourFloats, 0, 0, 0, 1, 0x86), {}},
        Row{"HugeText", bytes(0x04, 0x0B, "streamtyped", 0x81, 0xE8, 0x03, 0x84, 0x82, 255, 255, 255, 0x7F, "@"), {}},
        Row{"NegativeText",
            bytes(0x04, 0x0B, "streamtyped", 0x81, 0xE8, 0x03, 0x84, 0x82, 255, 255, 255, 255, "@"),
            {}}),
    [](const auto& row) { return row.param.name; });

TEST(OldArchive, RefusesEveryPrefix) {
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_EQ(colorFromOldArchive(std::span(whole).first(length)), std::nullopt) << length;
    }
}

TEST(OldArchive, RefusesAncestorsWithoutEnd) {
    Bytes archive = bytes(header, 0x84, 0x84);
    for (int i = 0; i < 100000; ++i) archive.insert(archive.end(), {0x84, 0x01, 'A', 0, 0x84});
    EXPECT_EQ(colorFromOldArchive(archive), std::nullopt);
}

TEST(OldArchive, SurvivesSeededMutations) {
    std::mt19937 random(20240608);
    int readable = 0;
    for (int round = 0; round < 10000; ++round) {
        Bytes mutated = whole;
        for (auto count = 1 + random() % 3; count > 0; --count) {
            mutated[random() % mutated.size()] = static_cast<std::uint8_t>(random());
        }
        const auto color = colorFromOldArchive(mutated);
        if (!color) continue;
        ++readable;
        for (const double component : *color) EXPECT_TRUE(std::isfinite(component));
    }
    EXPECT_GT(readable, 100);
}

}  // namespace
}  // namespace velamo
