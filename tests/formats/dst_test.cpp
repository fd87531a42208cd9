#include "velamo/formats/dst.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <random>

#include "tests/support/dst.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/import.h"

namespace velamo {
namespace {

using test::bytes;
using test::Bytes;
using test::dstEnd;
using test::dstFile;
using test::dstHeader;
using test::repeated;

constexpr float largest = std::numeric_limits<float>::max();

struct Row {
    const char* name;
    Bytes records;  // between the header and the end record
    int code;       // 0: success
    std::vector<VLMStitch> stitches;
    std::size_t threads = 1;
};
class DstReading : public testing::TestWithParam<Row> {};
TEST_P(DstReading, GivesTheRow) {
    VLMDesign design;
    VLMError error;
    EXPECT_EQ(readDst(design, dstFile(GetParam().records), &error), GetParam().code == 0);
    EXPECT_EQ(error.code, GetParam().code);
    EXPECT_EQ(design.stitches(), GetParam().stitches);
    EXPECT_EQ(design.threads().size(), GetParam().threads);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DstReading,
    testing::Values(Row{"NullStitch", bytes(0, 0, 0x03), 0, {{0, 0, false, false}}},
                    Row{"NullJump", bytes(0, 0, 0x83), 0, {{0, 0, true, false}}},
                    Row{"ColourChangeOpensAThread", bytes(0, 0, 0xC3), 0, {{0, 0, false, true}}, 2},
                    Row{"ColourChangeMoves", bytes(0x81, 0, 0xC3), 0, {{1, 1, false, true}}, 2},
                    Row{"EndMarkFirst", bytes(0, 0, 0xF3, 1, 0, 3), 0, {}},
                    Row{"EndMarkInTheMiddle", bytes(1, 0, 3, 0, 0, 0xF3, 1, 0, 3), 0, {{1, 0, false, false}}},
                    Row{"EndMarkWithMove", bytes(1, 0, 3, 0xFF, 0xFF, 0xF3, 1, 0, 3), 0, {{1, 0, false, false}}},
                    Row{"RightBy85", bytes(0x01, 0x01, 0x07), 0, {{85, 0, false, false}}},
                    Row{"UpBy85", bytes(0x80, 0x80, 0x23), 0, {{0, 85, false, false}}},
                    Row{"AllPairsCancel", bytes(0x0C, 0x0C, 0x0F), 0, {{0, 0, false, false}}},
                    Row{"LargestRightUp", bytes(0xA5, 0xA5, 0x27), 0, {{121, 121, false, false}}},
                    Row{"LargestLeftDown", bytes(0x5A, 0x5A, 0x9B), 0, {{-121, -121, true, false}}},
                    Row{"WeightsRight",
                        bytes(0x01, 0, 3, 0x04, 0, 3, 0, 0x01, 3, 0, 0x04, 3, 0, 0, 7),
                        0,
                        {{1, 0, false, false},
                         {9, 0, false, false},
                         {3, 0, false, false},
                         {27, 0, false, false},
                         {81, 0, false, false}}},
                    Row{"WeightsLeft",
                        bytes(0x02, 0, 3, 0x08, 0, 3, 0, 0x02, 3, 0, 0x08, 3, 0, 0, 11),
                        0,
                        {{-1, 0, false, false},
                         {-9, 0, false, false},
                         {-3, 0, false, false},
                         {-27, 0, false, false},
                         {-81, 0, false, false}}},
                    Row{"WeightsUp",
                        bytes(0x80, 0, 3, 0x20, 0, 3, 0, 0x80, 3, 0, 0x20, 3, 0, 0, 0x23),
                        0,
                        {{0, 1, false, false},
                         {0, 9, false, false},
                         {0, 3, false, false},
                         {0, 27, false, false},
                         {0, 81, false, false}}},
                    Row{"WeightsDown",
                        bytes(0x40, 0, 3, 0x10, 0, 3, 0, 0x40, 3, 0, 0x10, 3, 0, 0, 0x13),
                        0,
                        {{0, -1, false, false},
                         {0, -9, false, false},
                         {0, -3, false, false},
                         {0, -27, false, false},
                         {0, -81, false, false}}},
                    Row{"StitchesBeforeABadRecordStay",
                        bytes(1, 0, 3, 0, 0, 0xC3, 2, 0, 0x00, 1, 0, 3),
                        111,
                        {{1, 0, false, false}, {0, 0, false, true}},
                        2}),
    [](const auto& row) { return row.param.name; });

class DstKinds : public testing::TestWithParam<int> {};
TEST_P(DstKinds, OnlyThreeAreKnown) {
    const int control = GetParam();
    const bool isKnown = control == 0x03 || control == 0x83 || control == 0xC3;
    for (int middle = 0; middle < 0x40; middle += 4) {
        const int thirdByte = control | middle;
        if (thirdByte == 0xF3) continue;
        VLMDesign design;
        VLMError error;
        EXPECT_EQ(readDst(design, dstFile(bytes(0, 0, thirdByte)), &error), isKnown) << thirdByte;
        EXPECT_EQ(error.code, isKnown ? 0 : 111) << thirdByte;
    }
}
INSTANTIATE_TEST_SUITE_P(All, DstKinds,
                         testing::Values(0x00, 0x01, 0x02, 0x03, 0x40, 0x41, 0x42, 0x43, 0x80, 0x81, 0x82, 0x83, 0xC0,
                                         0xC1, 0xC2, 0xC3));

TEST(DstLength, Below516BytesIsNoFile) {
    const Bytes whole = bytes(dstHeader(), 1, 0, 3, 9);
    for (std::size_t length = 0; length < 516; ++length) {
        VLMDesign design;
        VLMError error;
        EXPECT_FALSE(readDst(design, std::span(whole).first(length), &error));
        EXPECT_EQ(error.code, 123);
        EXPECT_EQ(error.message(), "Unable to import DST file (missing header).");
    }
    VLMDesign design;
    EXPECT_TRUE(readDst(design, whole, nullptr));
    EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{1, 0, false, false}}));
}

TEST(DstLength, LastThreeBytesAreNotDecoded) {
    VLMDesign design;
    EXPECT_TRUE(readDst(design, bytes(dstHeader(), 1, 0, 3, 2, 0, 3), nullptr));
    EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{1, 0, false, false}}));
}

struct TagRow {
    std::string tag;
    int code;
    std::string message;
};
void PrintTo(const TagRow& row, std::ostream* out) {
    *out << row.tag;
}
class DstTags : public testing::TestWithParam<TagRow> {};
TEST_P(DstTags, AreAllNeeded) {
    Bytes file = dstFile(bytes(1, 0, 3));
    const auto found = std::search(file.begin(), file.end(), GetParam().tag.begin(), GetParam().tag.end());
    ASSERT_NE(found, file.end());
    *found = '?';
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(readDst(design, file, &error));
    EXPECT_EQ(error.code, GetParam().code);
    EXPECT_EQ(error.message(), GetParam().message);
    EXPECT_EQ(error.recoverySuggestion, GetParam().message);
    EXPECT_EQ(error.domain, "de.velamo.vlmdesign.ErrorDomain");
    EXPECT_TRUE(design.threads().empty());
}
TagRow tagRow(const std::string& tag, int code) {
    return {tag, code, "Unable to import DST file (missing " + tag + " tag in header)."};
}
INSTANTIATE_TEST_SUITE_P(Rows, DstTags,
                         testing::Values(tagRow("LA:", 110), tagRow("ST:", 112), tagRow("CO:", 113), tagRow("+X:", 114),
                                         tagRow("-X:", 115), tagRow("+Y:", 116), tagRow("-Y:", 117), tagRow("AX:", 118),
                                         tagRow("AY:", 119)));

TEST(DstHeader, FirstMissingTagDecides) {
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(readDst(design, bytes(repeated(512, ' '), 1, 0, 3, dstEnd), &error));
    EXPECT_EQ(error.code, 110);
}

TEST(DstHeader, TagMayStandAnywhereButAtTheVeryEnd) {
    const std::string others = "AX:-Y:+Y:-X:+X:CO:ST:LA:";
    for (const std::size_t start : {508U, 509U}) {
        Bytes file = bytes(others, repeated(start - others.size(), ' '), "AY:");
        file.resize(512, ' ');
        file = bytes(file, 1, 0, 3, dstEnd);
        VLMDesign design;
        VLMError error;
        EXPECT_EQ(readDst(design, file, &error), start == 508U);
        EXPECT_EQ(error.code, start == 508U ? 0 : 119);
    }
}

TEST(DstThreads, AreNumberedFrom1To20AndAgain) {
    Bytes records;
    for (int change = 0; change < 21; ++change) records = bytes(records, 1, 0, 0xC3);
    VLMDesign design;
    ASSERT_TRUE(readDst(design, dstFile(records), nullptr));
    ASSERT_EQ(design.threads().size(), 22U);
    for (std::size_t i = 0; i < 22; ++i) {
        EXPECT_EQ(design.threads()[i].key(), std::to_string(i % 20 + 1));
        EXPECT_EQ(design.threads()[i].palette(), "Undefined");
    }
}

TEST(DstThreads, ThatComeAgainShareTheirTexts) {
    // A file of nothing but colour changes has a thread for every three bytes.
    Bytes records;
    for (int change = 0; change < 40; ++change) test::append(records, bytes(1, 0, 0xC3));
    VLMDesign design;
    ASSERT_TRUE(readDst(design, dstFile(records), nullptr));
    ASSERT_EQ(design.threads().size(), 41U);
    for (std::size_t i = 20; i < 41; ++i) {
        EXPECT_EQ(&design.threads()[i].name(), &design.threads()[i - 20].name());
        EXPECT_EQ(design.threads()[i], VLMThread::initWithKeyofPalette(std::to_string(i % 20 + 1), "Undefined"));
    }
}

TEST(DstBounds, AreThoseOfEveryPositionButTheOrigin) {
    VLMDesign design;
    // A jump right and up, a stitch on, a colour change down: the origin itself is no sample.
    ASSERT_TRUE(readDst(design, dstFile(bytes(0x84, 0, 0x83, 0x04, 0, 3, 0x10, 0, 0xC3)), nullptr));
    EXPECT_EQ(design.xMin(), 9.0F);
    EXPECT_EQ(design.xMax(), 18.0F);
    EXPECT_EQ(design.yMin(), -8.0F);
    EXPECT_EQ(design.yMax(), 1.0F);
}

TEST(DstBounds, OfNoStitchStayAtTheExtremes) {
    VLMDesign design;
    ASSERT_TRUE(readDst(design, dstFile(dstEnd), nullptr));
    EXPECT_EQ(design.xMin(), largest);
    EXPECT_EQ(design.xMax(), -largest);
    EXPECT_EQ(design.yMin(), largest);
    EXPECT_EQ(design.yMax(), -largest);
}

TEST(DstBounds, AreWidenedUpToABadRecord) {
    VLMDesign design;
    EXPECT_FALSE(readDst(design, dstFile(bytes(1, 0, 3, 1, 0, 3, 1, 0, 0)), nullptr));
    EXPECT_EQ(design.xMin(), 1.0F);
    EXPECT_EQ(design.xMax(), 2.0F);
}

TEST(DstImport, SetsTypeAndVersionEvenWhenItFails) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    design.setDesignVersion(99);
    VLMError error;
    EXPECT_FALSE(importDstDesignFromURLerror(design, folder.path() / "missing.dst", &error));
    EXPECT_EQ(error.code, 123);
    EXPECT_EQ(design.designType(), "DST");
    EXPECT_EQ(design.designVersion(), 10);
}

/// The decoder as one would write it down bit by bit, for comparison.
VLMStitch plainlyDecoded(const std::uint8_t* record) {
    const auto bit = [&](int byte, int number) { return record[byte] >> number & 1; };
    const int x = bit(0, 0) - bit(0, 1) + 3 * (bit(1, 0) - bit(1, 1)) + 9 * (bit(0, 2) - bit(0, 3)) +
                  27 * (bit(1, 2) - bit(1, 3)) + 81 * (bit(2, 2) - bit(2, 3));
    const int y = bit(0, 7) - bit(0, 6) + 3 * (bit(1, 7) - bit(1, 6)) + 9 * (bit(0, 5) - bit(0, 4)) +
                  27 * (bit(1, 5) - bit(1, 4)) + 81 * (bit(2, 5) - bit(2, 4));
    return {static_cast<float>(x), static_cast<float>(y), bit(2, 7) != 0 && bit(2, 6) == 0, bit(2, 6) != 0};
}

TEST(DstReading, AgreesWithThePlainDecoder) {
    std::mt19937 random(7);
    Bytes records;
    std::vector<VLMStitch> stitches;
    float x = 0;
    float xMax = -largest;
    for (int i = 0; i < 20000; ++i) {
        constexpr std::array<int, 3> kinds{0x03, 0x83, 0xC3};
        int third = kinds[random() % 50 == 0 ? random() % 3 : 0] | static_cast<int>(random() & 0x3C);
        if (third == 0xF3) third = 0xC3;
        const Bytes record = bytes(static_cast<int>(random()), static_cast<int>(random()), third);
        records = i == 0 ? record : (records.insert(records.end(), record.begin(), record.end()), std::move(records));
        stitches.push_back(plainlyDecoded(record.data()));
        xMax = std::max(xMax, x += stitches.back().deltaX());
    }
    VLMDesign design;
    ASSERT_TRUE(readDst(design, dstFile(records), nullptr));
    EXPECT_EQ(design.stitches(), stitches);
    EXPECT_EQ(design.xMax(), xMax);
}

TEST(DstReading, SurvivesChangedBytes) {
    const Bytes whole = dstFile(bytes(1, 0, 3, 0x84, 1, 0x83, 0, 0, 0xC3, 2, 2, 3));
    std::mt19937 random(11);
    for (int i = 0; i < 10000; ++i) {
        Bytes file = whole;
        for (auto changes = random() % 4 + 1; changes > 0; --changes)
            file[random() % file.size()] = static_cast<std::uint8_t>(random());
        file.resize(file.size() - (random() % 8 == 0 ? random() % file.size() : 0));
        VLMDesign design;
        VLMError error;
        if (readDst(design, file, &error)) {
            EXPECT_EQ(error.code, 0);
            EXPECT_LE(design.stitches().size(), 4U);
        } else {
            EXPECT_TRUE(error.code == 123 || (error.code >= 110 && error.code <= 119)) << error.code;
        }
    }
}

}  // namespace
}  // namespace velamo
