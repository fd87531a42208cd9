// Designs without the disk: what bytes give is what a file of them gives, and what a design gives as bytes is what
// would stand in its file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cctype>
#include <thread>

#include "tests/support/samples.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/design_attributes.h"
#include "velamo/formats/export.h"
#include "velamo/formats/format.h"
#include "velamo/formats/import.h"
#include "velamo/formats/thread_file.h"

namespace velamo {
namespace {

using test::Bytes;
using test::sampleFile;
using test::TemporaryFolder;

/// Everything that an import sets, but for name and location.
void expectSame(const VLMDesign& one, const VLMDesign& other) {
    EXPECT_EQ(one.designType(), other.designType());
    EXPECT_EQ(one.designVersion(), other.designVersion());
    EXPECT_EQ(one.useThreadFile(), other.useThreadFile());
    EXPECT_EQ(one.displayRange(), other.displayRange());
    EXPECT_EQ(one.stitches().all(), other.stitches().all());
    EXPECT_EQ(one.threads().all(), other.threads().all());
    EXPECT_EQ(one.hoopVendor(), other.hoopVendor());
    EXPECT_EQ(one.hoopCode(), other.hoopCode());
    EXPECT_EQ((DesignRect{double(one.xMin()), double(one.yMin()), double(one.xMax()), double(one.yMax())}),
              (DesignRect{double(other.xMin()), double(other.yMin()), double(other.xMax()), double(other.yMax())}));
}

/// Threads by their numbers, as a person might choose them.
Bytes sideFileOf(std::size_t count) {
    std::vector<VLMThread> threads;
    threads.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        threads.push_back(VLMThread::initWithColorandNameforKeyofPalettewithName(
            VLMColor::initWithRedgreenblue(0.25, 0.5, 1), "blue " + std::to_string(i), "1", "Own", "My own"));
    return threadFileWith(threads);
}

class DesignBytes : public testing::TestWithParam<Format> {
protected:
    [[nodiscard]] std::string extension() const { return std::string(GetParam().extension); }
    [[nodiscard]] Bytes sample() const { return sampleFile(GetParam().extension); }
    [[nodiscard]] std::filesystem::path write(const Bytes& file) const {
        return folder_.write("design." + extension(), file);
    }

    TemporaryFolder folder_;
};

TEST_P(DesignBytes, GiveWhatTheirFileGives) {
    VLMDesign fromFile;
    ASSERT_TRUE(importDesignFromURLerror(fromFile, write(sample()), nullptr));
    VLMDesign fromBytes;
    VLMError error;
    ASSERT_TRUE(importDesignFromBytes(fromBytes, sample(), extension(), &error)) << error.message();
    expectSame(fromBytes, fromFile);
    EXPECT_FALSE(fromBytes.designLocation());
    VLMDesign byFormat;
    ASSERT_TRUE(importDesignFromBytes(byFormat, sample(), GetParam(), nullptr));
    expectSame(byFormat, fromFile);
}

TEST_P(DesignBytes, TakeTheThreadsOfASideFile) {
    VLMDesign plain;
    ASSERT_TRUE(importDesignFromBytes(plain, sample(), extension(), nullptr));
    const std::size_t count = plain.threads().size();
    const auto file = write(sample());
    for (const std::size_t threads : {count, count + 1}) {
        folder_.write("design.threads", sideFileOf(threads));
        VLMDesign fromFile;
        ASSERT_TRUE(importDesignFromURLerror(fromFile, file, nullptr));
        VLMDesign fromBytes;
        ASSERT_TRUE(importDesignFromBytes(fromBytes, sample(), extension(), nullptr, sideFileOf(threads)));
        EXPECT_EQ(fromBytes.useThreadFile(), threads == count);
        expectSame(fromBytes, fromFile);
        EXPECT_EQ(attributesOfBytes(sample(), extension(), sideFileOf(threads)), attributesOfFile(file));
    }
}

TEST_P(DesignBytes, FailAsTheirFileDoes) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{7}, sample().size() / 2}) {
        Bytes cut = sample();
        cut.resize(size);
        VLMDesign fromFile;
        VLMError ofFile;
        const bool isRead = importDesignFromURLerror(fromFile, write(cut), &ofFile);
        VLMDesign fromBytes;
        VLMError ofBytes;
        EXPECT_EQ(importDesignFromBytes(fromBytes, cut, extension(), &ofBytes), isRead) << size;
        EXPECT_EQ(ofBytes.code, ofFile.code) << size;
        EXPECT_EQ(ofBytes.message(), ofFile.message()) << size;
        EXPECT_EQ(attributesOfBytes(cut, extension()).has_value(), isRead) << size;
        expectSame(fromBytes, fromFile);
    }
}

TEST_P(DesignBytes, AreWrittenAsAFileIs) {
    if (GetParam().writer == nullptr) return;
    const auto aroundTheOrigin = test::bytes(10, 5, 0xEC, 0xF6, 0x80, 1, 0, 0, 5, 9);
    VLMDesign design;
    ASSERT_TRUE(importDesignFromBytes(design, aroundTheOrigin, "exp", nullptr));
    design.setDesignName("design." + extension());
    VLMDesign same = design.copy();
    const auto file = folder_.path() / ("design." + extension());
    const ExportOptions options{.dateText = "20200229123456"};
    VLMError error;
    ASSERT_TRUE(exportDesignToURLerror(same, file, &error, options)) << error.message();
    Bytes bytes{1, 2, 3};
    ASSERT_TRUE(exportDesignToBytes(design, extension(), bytes, &error, options)) << error.message();
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), TemporaryFolder::read(file));
    expectSame(design, same);
}

INSTANTIATE_TEST_SUITE_P(Each, DesignBytes, testing::ValuesIn(allFormats().begin(), allFormats().end()),
                         [](const auto& row) {
                             return std::string(row.param.type == "JEF+" ? std::string_view("JEFPlus")
                                                                         : row.param.type);
                         });

TEST(DesignBytesOfNoFormat, AreRefused) {
    for (const char* extension : {"", "txt", ".dst", "dst ", "dst.bak"}) {
        VLMDesign design;
        VLMError error;
        EXPECT_FALSE(importDesignFromBytes(design, sampleFile("dst"), extension, &error)) << extension;
        EXPECT_EQ(error.code, 10) << extension;
        EXPECT_FALSE(attributesOfBytes(sampleFile("dst"), extension)) << extension;
    }
    VLMDesign design;
    EXPECT_TRUE(importDesignFromBytes(design, sampleFile("dst"), "DsT", nullptr));
}

struct Refusal {
    const char* name;
    const char* extension;
    int threads;
    int stitches;
    float move;
    int code;
};
class ExportToBytes : public testing::TestWithParam<Refusal> {};
TEST_P(ExportToBytes, LeavesThemWhereItFails) {
    const Refusal& row = GetParam();
    VLMDesign design;
    design.setThreads(std::vector<VLMThread>(static_cast<std::size_t>(row.threads)));
    design.setStitches(
        std::vector<VLMStitch>(static_cast<std::size_t>(row.stitches), VLMStitch(row.move, 0, false, false)));
    design.setDesignName("kept");
    Bytes bytes{1, 2, 3};
    VLMError error;
    EXPECT_FALSE(exportDesignToBytes(design, row.extension, bytes, &error));
    EXPECT_EQ(error.code, row.code) << error.message();
    EXPECT_THAT(bytes, testing::ElementsAre(1, 2, 3));
    EXPECT_EQ(design.designName(), "kept");
}
INSTANTIATE_TEST_SUITE_P(Rows, ExportToBytes,
                         testing::Values(Refusal{"NoThreads", "dst", 0, 2, 1, 13},
                                         Refusal{"NoStitches", "dst", 1, 0, 1, 14},
                                         Refusal{"OnlyRead", "vp3", 1, 2, 1, 50},
                                         Refusal{"NoFormat", "txt", 1, 2, 1, 50},
                                         Refusal{"MovesTooLarge", "exp", 1, 2, 1e12F, 52}),
                         [](const auto& row) { return row.param.name; });

TEST(DesignBytesInThreads, AreReadAtOnce) {
    const auto formats = allFormats();
    std::atomic<int> same = 0;
    std::vector<std::thread> threads;
    threads.reserve(formats.size());
    for (const Format& format : formats)
        threads.emplace_back([&same, &format] {
            const auto file = sampleFile(format.extension);
            const auto expected = attributesOfBytes(file, format.extension);
            for (int turn = 0; turn < 50; ++turn)
                same += expected && attributesOfBytes(file, format.extension) == expected;
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(same, 50 * static_cast<int>(formats.size()));
}

}  // namespace
}  // namespace velamo
