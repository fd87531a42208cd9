#include "velamo/formats/pes.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/brother_files.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/import.h"

namespace velamo {
namespace {

using test::bytes;
using test::Bytes;
using test::pecFile;
using test::pecSegment;
using test::pesFile;
using test::pesFileOf;

constexpr float largest = std::numeric_limits<float>::max();

const std::vector<VLMStitch> stitchesOfTheSection{
    {-10, 10, true, false}, {5, -3, false, false}, {0, 0, false, true}, {10, -20, true, false}, {-1, -1, false, false}};

void expectTheSection(const VLMDesign& design) {
    EXPECT_EQ(design.stitches(), stitchesOfTheSection);
    ASSERT_EQ(design.threads().size(), 2U);
    EXPECT_EQ(design.threads()[0].key(), "800");
    EXPECT_EQ(design.threads()[1].key(), "900");
    EXPECT_EQ(design.xMin(), -10);
    EXPECT_EQ(design.xMax(), 5);
    EXPECT_EQ(design.yMin(), -14);
    EXPECT_EQ(design.yMax(), 10);
}

struct VersionRow {
    const char* digits;
    std::int32_t version;
    bool isAccepted;
};
void PrintTo(const VersionRow& row, std::ostream* out) {
    *out << '"' << row.digits << '"';
}
class PesVersions : public testing::TestWithParam<VersionRow> {};
TEST_P(PesVersions, AreKept) {
    VLMDesign design;
    VLMError error;
    EXPECT_EQ(readPes(design, pesFileOf(GetParam().digits, pecSegment()), &error), GetParam().isAccepted);
    EXPECT_EQ(error.code, GetParam().isAccepted ? 0 : 31);
    EXPECT_EQ(design.designVersion(), GetParam().version);
    EXPECT_EQ(design.stitches().empty(), !GetParam().isAccepted);
}
INSTANTIATE_TEST_SUITE_P(
    Accepted, PesVersions,
    testing::Values(VersionRow{"0001", 10, true}, VersionRow{"0020", 20, true}, VersionRow{"0025", 25, true},
                    VersionRow{"0030", 30, true}, VersionRow{"0040", 40, true}, VersionRow{"0050", 50, true},
                    VersionRow{"0055", 55, true}, VersionRow{"0056", 56, true}, VersionRow{"0060", 60, true},
                    VersionRow{"0070", 70, true}, VersionRow{"0071", 71, true}, VersionRow{"0080", 80, true},
                    VersionRow{"0090", 90, true}, VersionRow{"1   ", 10, true}, VersionRow{"  60", 60, true},
                    VersionRow{" +60", 60, true}, VersionRow{"60.5", 60, true}, VersionRow{"1abc", 10, true}));
INSTANTIATE_TEST_SUITE_P(Refused, PesVersions,
                         testing::Values(VersionRow{"0010", 10, false}, VersionRow{"0100", 100, false},
                                         VersionRow{"0000", 0, false}, VersionRow{"0002", 2, false},
                                         VersionRow{"0091", 91, false}, VersionRow{"9999", 9999, false},
                                         VersionRow{"-001", -1, false}, VersionRow{"- 60", 0, false},
                                         VersionRow{"abcd", 0, false}, VersionRow{"    ", 0, false},
                                         VersionRow{"6 0 ", 6, false}, VersionRow{"+-60", 0, false}));

struct ErrorRow {
    const char* name;
    Bytes file;
    int code;
    std::string message;
    bool isReason = false;
};
void expectError(const VLMError& error, const ErrorRow& row) {
    EXPECT_EQ(error.code, row.code);
    EXPECT_EQ(error.domain, "de.velamo.vlmdesign.ErrorDomain");
    EXPECT_EQ(error.recoverySuggestion, row.isReason ? "" : row.message);
    EXPECT_EQ(error.failureReason, row.isReason ? row.message : "");
}

class PesErrors : public testing::TestWithParam<ErrorRow> {};
TEST_P(PesErrors, AreTold) {
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(readPes(design, GetParam().file, &error));
    expectError(error, GetParam());
    EXPECT_FALSE(readPes(design, GetParam().file, nullptr));
}
const char* const pesHeader = "Unable to import PES file (missing header).";
const char* const pesVersion = "Unable to import PES file (unsupported version).";
const char* const noSection = "Unable to import PES file (PEC part missing).";
const char* const severalSections = "Unable to import PES file (PEC multiparts not supported by PES file version).";
const char* const tooSmall = "Unable to import PEC segment (segment too small for attributes).";

Bytes withMarkInLabel() {
    Bytes segment = pecSegment();
    std::copy_n("LA:", 3, segment.begin() + 5);
    return pesFileOf("0060", segment);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, PesErrors,
    testing::Values(ErrorRow{"NoFile", {}, 30, pesHeader}, ErrorRow{"SevenBytes", bytes("#PES000"), 30, pesHeader},
                    ErrorRow{"OtherMark", bytes("#PEC0001LA:", pecSegment()), 30, pesHeader},
                    ErrorRow{"SmallLetters", bytes("#pes0001LA:", pecSegment()), 30, pesHeader},
                    ErrorRow{"Version", bytes("#PES0010LA:", pecSegment()), 31, pesVersion},
                    ErrorRow{"VersionBeforeSection", bytes("#PES0010"), 31, pesVersion},
                    ErrorRow{"NoSection", bytes("#PES0001"), 32, noSection},
                    ErrorRow{"AlmostASection", bytes("#PES0001LA", pecSegment()), 32, noSection},
                    ErrorRow{"TwoSections", bytes(pesFileOf("0060", pecSegment()), "LA:"), 33, severalSections, true},
                    ErrorRow{"MarkInTheObjectData", bytes("#PES0060LA:", pesFileOf("0060", pecSegment())), 33,
                             severalSections, true},
                    ErrorRow{"MarkInTheLabel", withMarkInLabel(), 33, severalSections, true},
                    ErrorRow{"MarksNextToEachOther", bytes("#PES0001LA:LA:"), 33, severalSections, true},
                    ErrorRow{"EmptySection", bytes("#PES0001LA:"), 190, tooSmall}),
    [](const auto& row) { return row.param.name; });

class PecFileErrors : public testing::TestWithParam<ErrorRow> {};
TEST_P(PecFileErrors, AreTold) {
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(readPec(design, GetParam().file, &error));
    expectError(error, GetParam());
    EXPECT_FALSE(readPec(design, GetParam().file, nullptr));
}
const char* const pecHeader = "Unable to import PES/PEC file (missing header).";
const char* const pecVersion = "Unable to import PES/PEC file (unsupported version).";
INSTANTIATE_TEST_SUITE_P(Rows, PecFileErrors,
                         testing::Values(ErrorRow{"NoFile", {}, 30, pecHeader},
                                         ErrorRow{"TenBytes", bytes("#PEC0001LA"), 30, pecHeader},
                                         ErrorRow{"OtherMark", bytes("#PES0001LA:", pecSegment()), 30, pecHeader},
                                         ErrorRow{"Version2", bytes("#PEC0002LA:", pecSegment()), 31, pecVersion},
                                         ErrorRow{"Version20", bytes("#PEC0020LA:", pecSegment()), 31, pecVersion},
                                         ErrorRow{"VersionBeforeSection", bytes("#PEC0000???"), 31, pecVersion},
                                         ErrorRow{"NoSection", bytes("#PEC0001???", pecSegment()), 32, noSection},
                                         ErrorRow{"SectionLater", bytes("#PEC0001 LA:", pecSegment()), 32, noSection},
                                         ErrorRow{"EmptySection", bytes("#PEC0001LA:"), 190, tooSmall}),
                         [](const auto& row) { return row.param.name; });

TEST(PesReading, FindsTheSectionWhereverItIs) {
    VLMDesign design;
    ASSERT_TRUE(readPes(design, pesFile(), nullptr));
    expectTheSection(design);
    VLMDesign other;
    ASSERT_TRUE(readPes(other, bytes("#PES0060LA:", pecSegment()), nullptr));
    expectTheSection(other);
}

TEST(PecFileReading, TakesTheSectionBehindTheHeader) {
    VLMDesign design;
    ASSERT_TRUE(readPec(design, pecFile(), nullptr));
    expectTheSection(design);
    EXPECT_EQ(design.designVersion(), 10);
}

TEST(PecFileReading, MayHoldTheMarkOnceMore) {
    VLMDesign design;
    EXPECT_TRUE(readPec(design, bytes(pecFile(), "LA:"), nullptr));
}

TEST(PecFileReading, KeepsARefusedVersion) {
    VLMDesign design;
    EXPECT_FALSE(readPec(design, bytes("#PEC0071LA:"), nullptr));
    EXPECT_EQ(design.designVersion(), 71);
}

TEST(PesReading, SetsTheBoundsAnewBehindTheHeaderOnly) {
    VLMDesign design;
    design.setXMax(99);
    design.setDesignVersion(99);
    EXPECT_FALSE(readPes(design, {}, nullptr));
    EXPECT_EQ(design.designVersion(), 99);
    EXPECT_FALSE(readPes(design, bytes("#PES0001"), nullptr));
    EXPECT_EQ(design.xMax(), 99);
    EXPECT_FALSE(readPes(design, bytes("#PES0001LA:"), nullptr));
    EXPECT_EQ(design.xMin(), largest);
    EXPECT_EQ(design.xMax(), -largest);
    EXPECT_EQ(design.yMin(), largest);
    EXPECT_EQ(design.yMax(), -largest);
}

TEST(PesImport, SetsTheTypeEvenWithoutAFile) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(importPesDesignFromURLerror(design, folder.path() / "missing.pes", &error));
    EXPECT_EQ(error.code, 30);
    EXPECT_EQ(error.message(), pesHeader);
    EXPECT_EQ(design.designType(), "PES");
    EXPECT_FALSE(importPecDesignFromURLerror(design, folder.path() / "missing.pec", &error));
    EXPECT_EQ(error.code, 30);
    EXPECT_EQ(error.message(), pecHeader);
    EXPECT_EQ(design.designType(), "PEC");
}

TEST(PesImport, ReadsFiles) {
    const test::TemporaryFolder folder;
    VLMDesign pes;
    ASSERT_TRUE(importDesignFromURLerror(pes, folder.write("rose.pes", pesFileOf("0060", pecSegment())), nullptr));
    EXPECT_EQ(pes.designType(), "PES");
    EXPECT_EQ(pes.designVersion(), 60);
    EXPECT_EQ(pes.designHoop(), nullptr);
    expectTheSection(pes);
    VLMDesign pec;
    ASSERT_TRUE(importDesignFromURLerror(pec, folder.write("rose.pec", pecFile()), nullptr));
    EXPECT_EQ(pec.designType(), "PEC");
    EXPECT_EQ(pec.designVersion(), 10);
    expectTheSection(pec);
}

TEST(PesReading, SurvivesEveryPrefix) {
    const Bytes whole = pesFile();
    const std::size_t section = whole.size() - pecSegment().size();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        VLMDesign design;
        VLMError error;
        const bool isRead = readPes(design, std::span(whole).first(size), &error);
        const int code = size < 8                  ? 30
                         : size < section          ? 32
                         : size < section + 529    ? 190
                         : size < whole.size() - 8 ? 191
                                                   : 0;
        EXPECT_EQ(error.code, code) << size;
        EXPECT_EQ(isRead, code == 0) << size;
    }
}

}  // namespace
}  // namespace velamo
