#include "reading/design_bytes.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "tests/reading/same_design.h"
#include "tests/support/samples.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/format.h"
#include "velamo/formats/import.h"

namespace velamo {
namespace {

using Bytes = std::vector<std::byte>;
using test::expectSame;

Bytes bytesOf(const VLMDesign& design, const VLMError& error = {}) {
    Bytes bytes;
    const auto failure = writeDesignBytes(design, error, [&bytes](std::span<const std::byte> more) {
        bytes.insert(bytes.end(), more.begin(), more.end());
        return std::error_code();
    });
    EXPECT_FALSE(failure);
    return bytes;
}

bool parse(const Bytes& bytes, ReadDesign& read) {
    const auto take = [&bytes](std::span<std::byte> wanted, std::uint64_t offset) {
        EXPECT_LE(offset + wanted.size(), bytes.size());
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(offset), wanted.size(), wanted.begin());
        return std::error_code();
    };
    return parseDesignBytes({.read = take, .size = bytes.size()}, read);
}

/// Every field is another than that of an empty design.
VLMDesign oddDesign() {
    VLMDesign design;
    design.setDesignName("rose\n\xff.dst");
    design.setDesignType("DST");
    design.setDesignVersion(-12);
    design.setUseThreadFile(true);
    design.setSelectionActive(true);
    design.setDisplayRange({std::numeric_limits<std::uint64_t>::max(), 7});
    design.setXMin(-1.5F);
    design.setYMin(std::numeric_limits<float>::infinity());
    design.setXMax(0.1F);
    design.setYMax(-0.0F);
    design.setDesignHoop(
        std::make_shared<const VLMHoop>(VLMHoop::initWithHoopvendorcodewidthheightmultiHooproundHoopisWritable(
            "A", std::nullopt, -3, 110, 140, true, false, true)));
    auto thread = VLMThread::initWithColorandNameforKeyofPalettewithName(
        VLMColor::initWithRedgreenblue(0.1, 1e300, -0.0), "", "x1", std::nullopt, std::string(70'000, 'p'));
    thread.setLength(2.5F);
    thread.setTension(-7);
    thread.setIsShown(false);
    design.setThreads({thread, VLMThread(), thread, VLMThread::initWithKeyofPalette(Text("1"), Text("Undefined"))});
    for (int i = 0; i < 10'000; ++i)
        design.stitches().push_back({static_cast<float>(i) / 3, -0.0F, i % 2 == 0, i % 3 == 0, i % 5 == 0});
    return design;
}

TEST(DesignBytes, KeepEveryField) {
    const VLMDesign design = oddDesign();
    const VLMError error{.domain = systemErrorDomain, .code = -5, .recoverySuggestion = "try", .failureReason = "why"};
    ReadDesign read;
    ASSERT_TRUE(parse(bytesOf(design, error), read));
    expectSame(read.design, design);
    EXPECT_EQ(read.error.domain, error.domain);
    EXPECT_EQ(read.error.code, error.code);
    EXPECT_EQ(read.error.recoverySuggestion, error.recoverySuggestion);
    EXPECT_EQ(read.error.failureReason, error.failureReason);
}

TEST(DesignBytes, KeepAnEmptyDesign) {
    ReadDesign read;
    ASSERT_TRUE(parse(bytesOf(VLMDesign()), read));
    expectSame(read.design, VLMDesign());
    EXPECT_EQ(read.error.code, 0);
    EXPECT_TRUE(read.error.domain.empty());
}

class DesignBytesOfFormats : public testing::TestWithParam<Format> {};
TEST_P(DesignBytesOfFormats, KeepWhatReadersGive) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    VLMError error;
    const std::string extension(GetParam().extension);
    ASSERT_TRUE(importDesignFromURLerror(design, folder.write("x." + extension, test::sampleFile(extension)), &error))
        << error.message();
    ReadDesign read;
    ASSERT_TRUE(parse(bytesOf(design), read));
    expectSame(read.design, design);
}
INSTANTIATE_TEST_SUITE_P(Each, DesignBytesOfFormats, testing::ValuesIn(allFormats().begin(), allFormats().end()),
                         [](const auto& row) {
                             return std::string(row.param.type == "JEF+" ? "JEFPlus" : row.param.type);
                         });

/// A file may change between two threads with every stitch.
TEST(DesignBytes, AreFewForManyEqualThreads) {
    VLMDesign design;
    const auto one =
        VLMThread::initWithColorandNameforKeyofPalettewithName(VLMColor(), std::string(500, 'a'), "", "", "");
    const auto other = VLMThread::initWithColorandNameforKeyofPalettewithName(VLMColor(), "b", "", "", "");
    for (int i = 0; i < 50'000; ++i) design.threads().push_back(i % 2 == 0 ? one : other);
    const Bytes bytes = bytesOf(design);
    EXPECT_LT(bytes.size(), 50'000 * 4 + 2'000);
    ReadDesign read;
    ASSERT_TRUE(parse(bytes, read));
    EXPECT_EQ(read.design.threads(), design.threads());
}

/// A file may have a tension for each thread.
TEST(DesignBytes, KeepColorsSharedWhereThreadsDiffer) {
    VLMDesign design;
    const auto thread =
        VLMThread::initWithColorandNameforKeyofPalettewithName(VLMColor(), std::string(500, 'a'), "", "", "");
    for (int i = 0; i < 1'000; ++i) {
        design.threads().push_back(thread);
        design.threads().back().setTension(i);
        design.threads().back().setIsShown(i % 2 == 0);
    }
    const Bytes bytes = bytesOf(design);
    EXPECT_LT(bytes.size(), 1'000 * 20 + 2'000);
    ReadDesign read;
    ASSERT_TRUE(parse(bytes, read));
    EXPECT_EQ(read.design.threads(), design.threads());
    for (const VLMThread& other : read.design.threads()) EXPECT_TRUE(other.sharesLookWith(read.design.threads()[0]));
}

TEST(DesignBytes, OfAFullDiskAreTheSinksError) {
    const auto full = [](std::span<const std::byte>) { return std::make_error_code(std::errc::no_space_on_device); };
    EXPECT_EQ(writeDesignBytes(oddDesign(), {}, full), std::errc::no_space_on_device);
}

TEST(DesignBytes, ThatEndEarlyOrLateAreRefused) {
    VLMDesign design = oddDesign();
    design.stitches().all().resize(3);
    design.threads()[0].setPaletteName("short");
    design.threads()[2].setPaletteName("short");
    Bytes bytes = bytesOf(design);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        ReadDesign read;
        EXPECT_FALSE(parse(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)), read)) << size;
    }
    bytes.push_back({});
    ReadDesign read;
    EXPECT_FALSE(parse(bytes, read));
}

TEST(DesignBytes, ThatCannotBeReadAreRefused) {
    ReadDesign read;
    const auto fails = [](std::span<std::byte>, std::uint64_t) { return std::make_error_code(std::errc::io_error); };
    EXPECT_FALSE(parseDesignBytes({.read = fails, .size = 1000}, read));
}

/// What a reader that somebody took over might say.
TEST(DesignBytes, OfAStrangerDoNoHarm) {
    VLMDesign design = oddDesign();
    design.stitches().all().resize(40);
    design.threads()[0].setPaletteName("short");
    design.threads()[2].setPaletteName("short");
    const Bytes sound = bytesOf(design);
    std::mt19937 random(12);
    for (int turn = 0; turn < 20'000; ++turn) {
        Bytes bytes = sound;
        for (int change = 0; change < 1 + turn % 4; ++change) {
            const std::size_t place = random() % bytes.size();
            bytes[place] = std::byte(turn % 3 == 0 ? 0xFF : random() & 0xFF);
        }
        ReadDesign read;
        if (!parse(bytes, read)) continue;
        EXPECT_LE(read.design.stitches().size(), bytes.size() / 12);
        for (const VLMStitch& stitch : read.design.stitches()) {
            unsigned char flag = 0;
            const bool isJump = stitch.isJumpStitch();
            std::memcpy(&flag, &isJump, 1);
            EXPECT_LE(flag, 1);
        }
    }
}

}  // namespace
}  // namespace velamo
