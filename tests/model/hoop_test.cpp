#include "velamo/model/hoop.h"

#include <gtest/gtest.h>

namespace velamo {
namespace {

VLMHoop hoop(const Text& name, const Text& vendor, std::int32_t code, std::int32_t width, std::int32_t height,
             bool isRounded = false) {
    return VLMHoop::initWithHoopvendorcodewidthheightmultiHooproundHoopisWritable(name, vendor, code, width, height,
                                                                                  false, isRounded, true);
}

TEST(Hoop, EqualsByVendorNameAndSize) {
    const auto one = hoop("A", "Janome", 0, 110, 110);
    EXPECT_TRUE(one.isEqual(hoop("A", "Janome", 99, 110, 110, true)));
    EXPECT_FALSE(one.isEqual(hoop("B", "Janome", 0, 110, 110)));
    EXPECT_FALSE(one.isEqual(hoop("A", "Pfaff", 0, 110, 110)));
    EXPECT_FALSE(one.isEqual(hoop("A", "Janome", 0, 111, 110)));
    EXPECT_FALSE(one.isEqual(hoop("A", "Janome", 0, 110, 111)));
}

TEST(Hoop, TellsItsSize) {
    EXPECT_EQ(hoop("A", "Janome", 0, 110, 95).sizeString(), "110.0 mm x 95.0 mm");
    EXPECT_EQ(hoop("T1", "Janome", 8, 34, 35, true).sizeString(), "\u2300 34.0 mm");
}

TEST(Hoop, DescribesItselfByWhatItHas) {
    EXPECT_EQ(hoop("SQ23", "Janome", 28, 230, 230).description(), "Janome SQ23 (230.0 mm x 230.0 mm)");
    EXPECT_EQ(hoop("", "Janome", 28, 230, 230).description(), "230.0 mm x 230.0 mm");
    EXPECT_EQ(hoop("SQ23", "", 28, 230, 230).description(), "230.0 mm x 230.0 mm");
    EXPECT_EQ(hoop(std::nullopt, "Janome", 28, 230, 230).description(), "Janome (null) (230.0 mm x 230.0 mm)");
}

TEST(Hoop, CopyHasEveryValue) {
    const auto one = hoop("T1", "Janome", 8, 34, 35, true);
    const auto copy = one.copy();
    EXPECT_EQ(copy, one);
    EXPECT_EQ(copy.code(), 8);
    EXPECT_TRUE(copy.isRounded());
    EXPECT_TRUE(copy.isWritable());
}

}  // namespace
}  // namespace velamo
