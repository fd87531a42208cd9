#include <gtest/gtest.h>

#include <ostream>

#include "velamo/model/design.h"

namespace velamo {
namespace {

struct HoopRow {
    std::string vendor;
    std::string name;
    std::int32_t code = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool isMultiHoop = false;
    bool isRounded = false;
    bool isWritable = true;
    friend bool operator==(const HoopRow&, const HoopRow&) = default;
};
void PrintTo(const HoopRow& row, std::ostream* out) {
    *out << row.vendor << ' ' << row.name << ' ' << row.code << ' ' << row.width << " x " << row.height << ' '
         << row.isMultiHoop << row.isRounded << row.isWritable;
}

HoopRow rowOf(const VLMHoop& hoop) {
    return {hoop.vendor().value(), hoop.name().value(), hoop.code(),      hoop.width(),
            hoop.height(),         hoop.isMultiHoop(),  hoop.isRounded(), hoop.isWritable()};
}

HoopRow janome(const std::string& name, std::int32_t code, std::int32_t width, std::int32_t height) {
    return {"Janome", name, code, width, height};
}
HoopRow roundJanome(const std::string& name, std::int32_t code, std::int32_t diameter) {
    return {"Janome", name, code, diameter, diameter, false, true, false};
}

const std::vector<HoopRow> janomeHoops{janome("C/FA/M3", 1, 50, 50),
                                       janome("A", 0, 110, 110),
                                       janome("A(F)/ST/M2", 3, 126, 110),
                                       janome("B/RE", 2, 140, 200),
                                       janome("RE20a", 32, 170, 200),
                                       janome("SQ", 4, 200, 200),
                                       janome("SQ23", 28, 230, 230),
                                       {"Janome", "MA", 5, 200, 280, true, false, false},
                                       janome("M1", 6, 240, 200),
                                       janome("GR", 29, 230, 300),
                                       roundJanome("T1", 8, 34),
                                       roundJanome("T2", 9, 54),
                                       roundJanome("T3", 10, 84),
                                       roundJanome("T4", 11, 112),
                                       roundJanome("T5", 12, 142),
                                       janome("T6", 13, 78, 168),
                                       janome("FA10/~a", 30, 100, 40),
                                       janome("H1", 14, 100, 90),
                                       janome("200/SQ14/~a", 15, 140, 140),
                                       janome("S1", 16, 37, 59),
                                       janome("S2", 17, 28, 50),
                                       roundJanome("J1", 18, 30),
                                       janome("J2", 19, 24, 54),
                                       janome("J3", 20, 64, 28),
                                       janome("J4", 21, 42, 67),
                                       janome("J5", 22, 46, 46),
                                       janome("J6", 23, 66, 66),
                                       janome("J7", 24, 110, 95),
                                       janome("J8", 25, 120, 121),
                                       janome("AQ", 26, 120, 180),
                                       janome("ASQ", 27, 180, 180),
                                       janome("ASQ22", 31, 220, 220)};
const std::vector<HoopRow> pfaffHoops{{"Pfaff", "S", 2, 80, 80}, {"Pfaff", "L", 3, 120, 115}};

std::vector<HoopRow> rowsOf(const std::vector<HoopHandle>& hoops) {
    std::vector<HoopRow> rows;
    rows.reserve(hoops.size());
    for (const HoopHandle& hoop : hoops) rows.push_back(rowOf(*hoop));
    return rows;
}

/// A design with a size, in tenths of a millimetre.
VLMDesign designOf(float width, float height) {
    VLMDesign design;
    design.setXMax(width);
    design.setYMax(height);
    return design;
}

/// A design with the bounds given, all around the origin.
VLMDesign designAround(float left, float right, float down, float up) {
    VLMDesign design;
    design.setXMin(left);
    design.setXMax(right);
    design.setYMin(down);
    design.setYMax(up);
    return design;
}

VLMHoop hoopOf(std::int32_t width, std::int32_t height, bool isRounded = false) {
    return VLMHoop::initWithHoopvendorcodewidthheightmultiHooproundHoopisWritable("N", "V", 7, width, height, false,
                                                                                  isRounded, true);
}

TEST(HoopCatalogue, Holds34HoopsInTheirOrder) {
    auto all = janomeHoops;
    all.insert(all.end(), pfaffHoops.begin(), pfaffHoops.end());
    ASSERT_EQ(all.size(), 34U);
    EXPECT_EQ(rowsOf(VLMDesign::hoops()), all);
}

TEST(HoopCatalogue, IsMadeAnewEachTime) {
    EXPECT_NE(VLMDesign::hoops()[0], VLMDesign::hoops()[0]);
}

TEST(HoopCatalogue, TellsTheHoopsOfAVendor) {
    EXPECT_EQ(rowsOf(VLMDesign::allHoopsFromVendor("Janome").value()), janomeHoops);
    EXPECT_EQ(rowsOf(VLMDesign::allHoopsFromVendor("Pfaff").value()), pfaffHoops);
    for (const char* vendor : {"Brother", "", "janome", "Janome "})
        EXPECT_EQ(VLMDesign::allHoopsFromVendor(vendor), std::nullopt) << vendor;
}

TEST(DesignHoop, AnswersWithoutOne) {
    const VLMDesign design;
    EXPECT_EQ(design.hoopName(), "");
    EXPECT_EQ(design.hoopWidth(), 0);
    EXPECT_EQ(design.hoopHeight(), 0);
    EXPECT_EQ(design.hoopCode(), -1);
    EXPECT_EQ(design.hoopVendor(), "");
    EXPECT_FALSE(design.hoopIsRound());
}

TEST(DesignHoop, AnswersWithOne) {
    VLMDesign design;
    ASSERT_TRUE(design.setHoopFromVendorwithCode("Janome", 3));
    EXPECT_EQ(design.hoopName(), "Janome A(F)/ST/M2 (126.0 mm x 110.0 mm)");
    EXPECT_EQ(design.hoopWidth(), 126);
    EXPECT_EQ(design.hoopHeight(), 110);
    EXPECT_EQ(design.hoopCode(), 3);
    EXPECT_EQ(design.hoopVendor(), "Janome");
    EXPECT_FALSE(design.hoopIsRound());
    ASSERT_TRUE(design.setHoopFromVendorwithCode("Janome", 8));
    EXPECT_EQ(design.hoopName(), "Janome T1 (\u2300 34.0 mm)");
    EXPECT_TRUE(design.hoopIsRound());
}

TEST(DesignHoop, IsSetByVendorAndCode) {
    VLMDesign design;
    for (const auto& rows : {janomeHoops, pfaffHoops}) {
        for (const HoopRow& row : rows) {
            EXPECT_TRUE(design.setHoopFromVendorwithCode(row.vendor, row.code));
            EXPECT_EQ(rowOf(*design.designHoop()), row);
        }
    }
}

TEST(DesignHoop, StaysWhenTheCodeIsUnknown) {
    VLMDesign design;
    ASSERT_TRUE(design.setHoopFromVendorwithCode("Janome", 28));
    EXPECT_EQ(design.designHoop()->name(), "SQ23");
    EXPECT_FALSE(design.setHoopFromVendorwithCode("Pfaff", 28));
    EXPECT_FALSE(design.setHoopFromVendorwithCode("Janome", 7));
    EXPECT_FALSE(design.setHoopFromVendorwithCode("Janome", 33));
    EXPECT_FALSE(design.setHoopFromVendorwithCode("Janome", -2));
    EXPECT_FALSE(design.setHoopFromVendorwithCode("Brother", 2));
    ASSERT_NE(design.designHoop(), nullptr);
    EXPECT_EQ(design.designHoop()->name(), "SQ23");
}

TEST(DesignHoop, IsTakenAwayByMinusOne) {
    for (const char* vendor : {"Janome", "Pfaff", "Brother"}) {
        VLMDesign design;
        ASSERT_TRUE(design.setHoopFromVendorwithCode("Janome", 28));
        EXPECT_FALSE(design.setHoopFromVendorwithCode(vendor, -1));
        EXPECT_EQ(design.designHoop(), nullptr);
        EXPECT_FALSE(design.setHoopFromVendorwithCode(vendor, 99));
        EXPECT_EQ(design.designHoop(), nullptr);
    }
}

struct ChoiceRow {
    const char* vendor;
    float width;
    float height;
    const char* name;  // "": none
};
void PrintTo(const ChoiceRow& row, std::ostream* out) {
    *out << row.vendor << ' ' << row.width << " x " << row.height;
}
class HoopChoice : public testing::TestWithParam<ChoiceRow> {};
TEST_P(HoopChoice, TakesTheFirstThatFits) {
    const VLMDesign design = designOf(GetParam().width, GetParam().height);
    const HoopHandle hoop = design.findHoopFromVendor(GetParam().vendor);
    EXPECT_EQ(hoop ? hoop->name() : "", GetParam().name);
    EXPECT_EQ(design.designHoop(), nullptr);
}
INSTANTIATE_TEST_SUITE_P(Rows, HoopChoice,
                         testing::Values(ChoiceRow{"Janome", 500, 500, "C/FA/M3"}, ChoiceRow{"Janome", 501, 500, "A"},
                                         ChoiceRow{"Janome", 500, 501, "A"}, ChoiceRow{"Janome", 1100, 1100, "A"},
                                         // Not the smaller 140 x 140 mm, which stands behind.
                                         ChoiceRow{"Janome", 1200, 1200, "B/RE"},
                                         // 200 x 280 mm would fit, but is clamped in several positions.
                                         ChoiceRow{"Janome", 2000, 2800, "GR"}, ChoiceRow{"Janome", 2400, 2000, "M1"},
                                         // Designs are not turned.
                                         ChoiceRow{"Janome", 2000, 2400, "GR"}, ChoiceRow{"Janome", 2300, 3000, "GR"},
                                         ChoiceRow{"Janome", 2400, 2001, ""}, ChoiceRow{"Janome", 2500, 2500, ""},
                                         ChoiceRow{"Pfaff", 800, 800, "S"}, ChoiceRow{"Pfaff", 801, 800, "L"},
                                         ChoiceRow{"Pfaff", 1200, 1150, "L"}, ChoiceRow{"Pfaff", 1200, 1151, ""},
                                         ChoiceRow{"Brother", 10, 10, ""}));

TEST(HoopFit, ComparesSizesAndEqualIsEnough) {
    const VLMHoop hoop = hoopOf(50, 40);
    EXPECT_TRUE(designOf(500, 400).designFitsInHoop(hoop));
    EXPECT_FALSE(designOf(501, 400).designFitsInHoop(hoop));
    EXPECT_FALSE(designOf(500, 401).designFitsInHoop(hoop));
    // Sizes are whole tenths, the fraction is cut off.
    EXPECT_TRUE(designOf(500.9F, 400.9F).designFitsInHoop(hoop));
    // Where the design lies does not matter, nor that the hoop is round.
    EXPECT_TRUE(designAround(10000, 10500, -10400, -10000).designFitsInHoop(hoop));
    EXPECT_TRUE(designOf(500, 500).designFitsInHoop(hoopOf(50, 50, true)));
    EXPECT_TRUE(designOf(2000000000, 10).designFitsInHoop(hoopOf(2000000000, 1)));
}

struct OutsideRow {
    const char* name;
    float left;
    float right;
    float down;
    float up;
    std::int32_t width;
    std::int32_t height;
    bool isOutside;
};
class HoopOutside : public testing::TestWithParam<OutsideRow> {};
TEST_P(HoopOutside, IsTold) {
    const OutsideRow& row = GetParam();
    EXPECT_EQ(designAround(row.left, row.right, row.down, row.up).stitchesOutsideOfHoop(hoopOf(row.width, row.height)),
              row.isOutside);
}
INSTANTIATE_TEST_SUITE_P(Rows, HoopOutside,
                         testing::Values(OutsideRow{"Inside", -700, 700, -700, 700, 200, 200, false},
                                         OutsideRow{"JustInside", -999, 999, -999, 999, 200, 200, false},
                                         OutsideRow{"OnTheRightEdge", -700, 1000, -700, 700, 200, 200, true},
                                         OutsideRow{"OnTheLeftEdge", -1000, 700, -700, 700, 200, 200, true},
                                         OutsideRow{"OnTheUpperEdge", -700, 700, -700, 1000, 200, 200, true},
                                         OutsideRow{"OnTheLowerEdge", -700, 700, -1000, 700, 200, 200, true},
                                         OutsideRow{"SmallButFarAway", 2000, 2010, 0, 10, 200, 200, true},
                                         OutsideRow{"HighHoop", -70, 70, -900, 900, 100, 200, false},
                                         OutsideRow{"WideHoop", -70, 70, -900, 900, 200, 100, true},
                                         // 37 mm count as 36.
                                         OutsideRow{"OddSizeInside", 0, 179, 0, 0, 37, 50, false},
                                         OutsideRow{"OddSizeOnTheEdge", 0, 180, 0, 0, 37, 50, true},
                                         OutsideRow{"NoHoopAtAll", 0, 0, 0, 0, 1, 1, true}),
                         [](const auto& row) { return row.param.name; });

TEST(HoopOutside, OfTheCatalogueHoop) {
    VLMDesign design = designAround(-700, 700, -700, 700);
    ASSERT_TRUE(design.setHoopFromVendorwithCode("Janome", 4));
    EXPECT_FALSE(design.stitchesOutsideOfHoop(*design.designHoop()));
    design.setXMax(1000);
    EXPECT_TRUE(design.stitchesOutsideOfHoop(*design.designHoop()));
}

}  // namespace
}  // namespace velamo
