#include "velamo/formats/export.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <limits>

#include "tests/support/bytes.h"
#include "tests/support/designs.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/format.h"
#include "velamo/formats/import.h"
#include "velamo/formats/thread_file.h"
#include "velamo/model/failure.h"
#include "velamo/platform/system/files.h"

namespace {

/// What the library says to the system's log while this test program runs.
std::vector<std::string>& logLines() {
    static std::vector<std::string> lines;
    return lines;
}

void keepLine(const char* format, std::va_list arguments) {
    std::array<char, 4096> line{};
    std::vsnprintf(line.data(), line.size(), format, arguments);
    logLines().emplace_back(line.data());
}

}  // namespace

// The program's own functions come before those of the system's library; which of the two is called depends on how
// that was made.
extern "C" {
void syslog(int, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    keepLine(format, arguments);
    va_end(arguments);
}
// NOLINTNEXTLINE(bugprone-reserved-identifier): the name is the system's.
void __syslog_chk(int, int, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    keepLine(format, arguments);
    va_end(arguments);
}
}

namespace velamo {
namespace {

using test::change;
using test::sewn;
using test::stitch;
using test::TemporaryFolder;

VLMDesign twoColors() {
    return sewn({stitch(10, 0), change(0, 0), stitch(-20, 10)}, 2);
}

TEST(Export, NeedsThreadsThenStitches) {
    const TemporaryFolder folder;
    const auto target = folder.path() / "rose.dst";
    VLMDesign nothing;
    VLMDesign noThreads = sewn({stitch(1, 1)}, 0);
    VLMDesign noStitches = sewn({}, 1);
    for (auto [design, code] : {std::pair{&nothing, 13}, std::pair{&noThreads, 13}, std::pair{&noStitches, 14}}) {
        VLMError error;
        EXPECT_FALSE(exportDesignToURLerror(*design, target, &error));
        EXPECT_EQ(error.code, code);
        EXPECT_EQ(error.message(), code == 13 ? "Unable to export embroidery file (no threads found)."
                                              : "Unable to export embroidery file (no stitches found).");
        EXPECT_FALSE(exportDesignToURLerror(*design, target, nullptr));
        EXPECT_FALSE(design->designName());
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(Export, GoesByTheExtensionInAnyCase) {
    const TemporaryFolder folder;
    for (const char* name : {"X.DST", "x.Dst", "x.dst"}) {
        VLMDesign design = twoColors();
        VLMError error;
        ASSERT_TRUE(exportDesignToURLerror(design, folder.path() / name, &error)) << error.message();
        EXPECT_EQ(design.designType(), "DST");
        EXPECT_EQ(design.designName(), name);
        EXPECT_FALSE(design.designLocation());
        EXPECT_EQ(TemporaryFolder::read(folder.path() / name).substr(0, 3), "LA:");
    }
}

TEST(Export, WritesTheFormatsOfTheTable) {
    std::vector<std::string_view> written;
    for (const Format& format : allFormats())
        if (format.writer != nullptr) written.push_back(format.extension);
    EXPECT_THAT(written, testing::IsSupersetOf({"jef", "pes", "pec", "exp", "dst", "pcs"}));
}

TEST(Export, FitsTheMovesToTheFormat) {
    const TemporaryFolder folder;
    VLMDesign design = sewn({stitch(300, 0), stitch(-300, 0)});
    design.setDisplayRange({1, 1});
    ASSERT_TRUE(exportDesignToURLerror(design, folder.path() / "x.dst", nullptr));
    EXPECT_EQ(design.stitches(), (std::vector{stitch(120, 0), stitch(120, 0), stitch(60, 0), stitch(-120, 0),
                                              stitch(-120, 0), stitch(-60, 0)}));
    EXPECT_EQ(design.displayRange(), (StitchRange{0, 6}));
    EXPECT_EQ(TemporaryFolder::read(folder.path() / "x.dst").size(), 512U + 6 * 3 + 4);
}

struct LogRow {
    const char* name;
    const char* file;
    bool hasSlot;
    std::string line;  // behind the location
};
class UnsupportedFormats : public testing::TestWithParam<LogRow> {};
TEST_P(UnsupportedFormats, AreRefusedWithALineInTheLog) {
    const TemporaryFolder folder;
    const auto sideFile = folder.write("from.threads", "old");
    VLMDesign design = twoColors();
    design.setDesignLocation(folder.path() / "from.dst");
    const StitchList stitches = design.stitches().copy();
    VLMError error;
    logLines().clear();
    EXPECT_FALSE(
        exportDesignToURLerror(design, folder.path() / GetParam().file, GetParam().hasSlot ? &error : nullptr));
    EXPECT_EQ(error.code, GetParam().hasSlot ? 50 : 0);
    EXPECT_EQ(error.recoverySuggestion, GetParam().hasSlot ? "Unsupported file format (UTI) for export." : "");
    EXPECT_EQ(logLines(), std::vector<std::string>{"velamo: VLMDesign:exportDesignToURL:file://" +
                                                   folder.path().native() + "/" + GetParam().line});
    EXPECT_EQ(design.designName(), GetParam().file);
    EXPECT_EQ(design.stitches(), stitches);
    EXPECT_TRUE(std::filesystem::exists(sideFile));
    EXPECT_FALSE(std::filesystem::exists(folder.path() / GetParam().file));
}
const std::string unsupported =
    "\n    Error: Error Domain=de.velamo.vlmdesign.ErrorDomain Code=50 \"Unsupported file format (UTI) for export.\", "
    "fileExtension: ";
INSTANTIATE_TEST_SUITE_P(Rows, UnsupportedFormats,
                         testing::Values(LogRow{"JefPlus", "x.jef+", true, "x.jef%2B" + unsupported + "jef+"},
                                         LogRow{"OnlyRead", "x.VP3", true, "x.VP3" + unsupported + "vp3"},
                                         LogRow{"Unknown", "x.txt", true, "x.txt" + unsupported + "txt"},
                                         LogRow{"NoExtension", "rose", true, "rose" + unsupported},
                                         LogRow{"NoSlot", "x.jpx", false,
                                                "x.jpx\n    Error: (null), fileExtension: jpx"}),
                         [](const auto& row) { return row.param.name; });

TEST(Export, TakesTheOnlyReadFormatsForUnknown) {
    for (const char* extension : {"jef+", "jpx", "sew", "vp3", "ksm", "pcd", "pcq"}) {
        const Format* format = formatWithExtension(extension);
        ASSERT_NE(format, nullptr);
        EXPECT_EQ(format->writer, nullptr) << extension;
    }
}

TEST(Export, KeepsTheSideFileOfTheLocationInStep) {
    const TemporaryFolder folder;
    const auto from = folder.path() / "from.pes";
    for (const bool useThreadFile : {true, false}) {
        for (const bool isThere : {true, false}) {
            std::filesystem::remove(threadFileOf(from));
            if (isThere) folder.write("from.threads", "old");
            folder.write("to.threads", "another design's");
            VLMDesign design = twoColors();
            design.setDesignLocation(from);
            design.setUseThreadFile(useThreadFile);
            ASSERT_TRUE(exportDesignToURLerror(design, folder.path() / "to.dst", nullptr));
            EXPECT_EQ(design.designLocation(), from);
            EXPECT_EQ(std::filesystem::exists(threadFileOf(from)), useThreadFile);
            EXPECT_EQ(TemporaryFolder::read(folder.path() / "to.threads"), "another design's");
            if (!useThreadFile) continue;
            VLMDesign other = sewn({}, 2);
            other.threads().all().assign(2, test::threadOf("1", "Undefined"));
            EXPECT_TRUE(importThreadsForDesign(other, from));
            EXPECT_EQ(test::keysOf(other), (std::vector<Text>{"800", "800"}));
        }
    }
}

TEST(Export, LeavesTheSideFileWhenItFails) {
    const TemporaryFolder folder;
    folder.write("from.threads", "old");
    for (const bool useThreadFile : {true, false}) {
        VLMDesign design = twoColors();
        design.setDesignLocation(folder.path() / "from.dst");
        design.setUseThreadFile(useThreadFile);
        VLMError error;
        EXPECT_FALSE(exportDesignToURLerror(design, folder.path() / "missing/to.dst", &error));
        EXPECT_EQ(error.domain, systemErrorDomain);
        EXPECT_EQ(error.code, ENOENT);
        EXPECT_EQ(design.designName(), "to.dst");
        EXPECT_EQ(TemporaryFolder::read(folder.path() / "from.threads"), "old");
    }
}

TEST(Export, PassesTheWritersErrorOn) {
    const TemporaryFolder folder;
    VLMDesign design = sewn({stitch(5, 5), stitch(15, 15)});
    VLMError error;
    EXPECT_FALSE(exportDesignToURLerror(design, folder.path() / "x.dst", &error));
    EXPECT_EQ(error.code, 130);
    EXPECT_EQ(error.domain, designErrorDomain);
    EXPECT_FALSE(exportDesignToURLerror(design, folder.path() / "x.dst", nullptr));
}

TEST(Export, RefusesADesignOfNothingButJumps) {
    const test::TemporaryFolder folder;
    for (const Format& format : allFormats()) {
        if (format.writer == nullptr) continue;
        const auto file = folder.write("old." + std::string(format.extension), test::bytes(1, 2, 3));
        VLMDesign design = test::designOf({test::jump(1, 1), test::jump(2, 2)});
        VLMError error;
        EXPECT_FALSE(exportDesignToURLerror(design, file, &error)) << format.extension;
        EXPECT_EQ(error.code, 14);
        EXPECT_EQ(readWholeFile(file), test::bytes(1, 2, 3));
    }
}

TEST(Export, SaysWhenMovesCannotBeFitted) {
    const TemporaryFolder folder;
    folder.write("from.threads", "old");
    VLMDesign design = sewn({stitch(std::numeric_limits<float>::infinity(), 0), stitch(1, 1)});
    design.setDesignLocation(folder.path() / "from.dst");
    const StitchList stitches = design.stitches().copy();
    VLMError error;
    EXPECT_FALSE(exportDesignToURLerror(design, folder.path() / "x.exp", &error));
    EXPECT_EQ(error.code, 52);
    EXPECT_EQ(error.message(), "Unable to export embroidery file (moves too large).");
    EXPECT_EQ(error.domain, designErrorDomain);
    EXPECT_EQ(design.stitches(), stitches);
    // The writer has run all the same, but there is no file; the side file stays for the design to be put right.
    EXPECT_EQ(design.designType(), "EXP");
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "x.exp"));
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "from.threads"));
    EXPECT_FALSE(exportDesignToURLerror(design, folder.path() / "x.exp", nullptr));
}

/// Whatever the writer makes of such moves, it is another design than the one that is to be kept.
TEST(Export, LeavesTheOldFileWhenMovesCannotBeFitted) {
    for (const Format& format : allFormats()) {
        if (format.writer == nullptr) continue;
        const TemporaryFolder folder;
        const auto old = folder.write("old." + std::string(format.extension), test::bytes(1, 2, 3));
        const auto fresh = folder.path() / ("fresh." + std::string(format.extension));
        for (const auto& target : {old, fresh}) {
            VLMDesign design = sewn({stitch(1, 1), test::jump(1e12F, 0), stitch(-1, 1)});
            design.setXMin(-1);  // bounds that all writers take
            design.setXMax(1);
            design.setYMin(-1);
            design.setYMax(1);
            VLMError error;
            EXPECT_FALSE(exportDesignToURLerror(design, target, &error));
            EXPECT_EQ(error.code, format.type == "DST" ? 132 : 52) << target;  // the writer's own comes first
        }
        EXPECT_EQ(readWholeFile(old), test::bytes(1, 2, 3)) << old;
        EXPECT_FALSE(std::filesystem::exists(fresh)) << fresh;
    }
}

TEST(Export, HandsTheFinishedFileToWhoeverWantsIt) {
    for (const Format& format : allFormats()) {
        if (format.writer == nullptr) continue;
        const TemporaryFolder folder;
        const auto target = folder.path() / ("x." + std::string(format.extension));
        VLMDesign written = twoColors();
        ASSERT_TRUE(exportDesignToURLerror(written, target, nullptr, {.dateText = "20260401120000"}));
        const auto file = readWholeFile(target);
        std::filesystem::remove(target);
        std::vector<std::vector<std::uint8_t>> taken;
        ExportOptions options{.dateText = "20260401120000"};
        options.save = [&](const std::filesystem::path& url, std::span<const std::uint8_t> bytes, VLMError* error) {
            EXPECT_EQ(url, target);
            taken.emplace_back(bytes.begin(), bytes.end());
            return taken.size() == 1 || failWithSystemError(EDOM, error);
        };
        VLMDesign design = twoColors();
        VLMError error;
        EXPECT_TRUE(exportDesignToURLerror(design, target, &error, options)) << error.message();
        EXPECT_FALSE(exportDesignToURLerror(design, target, &error, options));
        EXPECT_EQ(error.code, EDOM);
        EXPECT_EQ(taken, (std::vector{file, file}));
        EXPECT_FALSE(std::filesystem::exists(target));
    }
}

TEST(Export, RefusesMovesThatWouldFillADisk) {
    const TemporaryFolder folder;
    std::vector<VLMStitch> stitches;
    for (int i = 0; i < 2000; ++i) {
        stitches.emplace_back(i % 2 == 0 ? 500000.0F : -500000.0F, 0.0F, true, false);
        stitches.emplace_back(1.0F, 1.0F, false, false);
    }
    VLMDesign design = sewn(std::move(stitches));
    VLMError error;
    EXPECT_FALSE(exportDesignToURLerror(design, folder.path() / "x.exp", &error));
    EXPECT_EQ(error.code, 52);
    EXPECT_EQ(design.stitches().size(), 4000U);
}

TEST(Export, PrefersTheWritersErrorToItsOwn) {
    const TemporaryFolder folder;
    VLMDesign design = sewn({stitch(1e30F, 0), stitch(1, 1)});
    VLMError error;
    EXPECT_FALSE(exportDesignToURLerror(design, folder.path() / "x.dst", &error));
    EXPECT_EQ(error.code, 130);
}

}  // namespace
}  // namespace velamo
