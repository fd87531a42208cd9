#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <optional>
#include <thread>

#include "tests/plugin/importer_module.h"
#include "tests/support/other_user.h"
#include "tests/support/sanitizers.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/thread_file.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;
using test::bytes;
using test::Bytes;
using test::dstFile;
using test::emptyDictionary;
using test::ImporterModule;
using test::pathText;
using test::smallDst;

constexpr int stitch = 0x03;
constexpr int jump = 0x83;
constexpr int colorChange = 0xC3;

/// Whether one owner holds the object. Those that last for ever, as some of Apple's numbers do, have countless ones.
bool hasOneOwner(CFTypeRef object) {
    constexpr CFIndex countless = 1000000;
    const CFIndex owners = CFGetRetainCount(object);
    return owners == 1 || owners > countless;
}

/// So many records of the kind that do not move.
Bytes standing(std::size_t count, int kind) {
    Bytes records;
    for (std::size_t index = 0; index < count; ++index) test::append(records, bytes(0, 0, kind));
    return records;
}

/// Nothing where it would lose something.
std::optional<float> singleIn(CFDictionaryRef attributes, CFStringRef key) {
    const auto number = static_cast<CFNumberRef>(CFDictionaryGetValue(attributes, key));
    Float32 value = 0;
    if (number == nullptr || !CFNumberGetValue(number, kCFNumberFloat32Type, &value)) return std::nullopt;
    return value;
}

class Metadata : public testing::Test {
protected:
    bool get(const fs::path& file) {
        return importer_.getMetadata(nullptr, attributes_.get(), nullptr, pathText(file).get());
    }
    void expectAttributes(float width, float height, float stitches, float colors) {
        EXPECT_EQ(singleIn(attributes_.get(), CFSTR("de_velamo_embroidery_width")), width);
        EXPECT_EQ(singleIn(attributes_.get(), CFSTR("de_velamo_embroidery_height")), height);
        EXPECT_EQ(singleIn(attributes_.get(), CFSTR("de_velamo_embroidery_stitches")), stitches);
        EXPECT_EQ(singleIn(attributes_.get(), CFSTR("de_velamo_embroidery_colors")), colors);
    }

    const ImporterModule importer_{};
    const test::TemporaryFolder folder_;
    const Owned<CFMutableDictionaryRef> attributes_ = emptyDictionary();
};

TEST_F(Metadata, AreMillimetresAndCounts) {
    // (9, 3), (10, 3), (1, 30): 0.9 mm wide and 2.7 mm high
    const auto file = folder_.write("rose.dst", dstFile(bytes(0x04, 0x80, stitch, 0x01, 0, stitch, 0x08, 0x20, jump)));
    EXPECT_TRUE(get(file));
    EXPECT_EQ(CFDictionaryGetCount(attributes_.get()), 4);
    expectAttributes(0.9F, 2.7F, 3, 1);
}

TEST_F(Metadata, AreStoredInSinglePrecision) {
#ifdef __APPLE__
    GTEST_SKIP() << "a number may be kept in another type than it was made with";
#endif
    ASSERT_TRUE(get(folder_.write("rose.dst", smallDst())));
    for (const CFStringRef key : attributeKeys()) {
        const auto* number = static_cast<CFNumberRef>(CFDictionaryGetValue(attributes_.get(), key));
        EXPECT_EQ(CFNumberGetType(number), kCFNumberFloat32Type);
    }
}

TEST_F(Metadata, DivideTenthsInSinglePrecision) {
    // From 0 to 1234 in ten moves of 121 and one of 24 (27 - 3).
    Bytes records = standing(1, stitch);
    for (int count = 0; count < 10; ++count) test::append(records, bytes(0x05, 0x05, 0x07));
    test::append(records, bytes(0x00, 0x06, stitch));
    EXPECT_TRUE(get(folder_.write("wide.dst", dstFile(records))));
    expectAttributes(123.4F, 0, 12, 1);
}

TEST_F(Metadata, OfHalfAMillimetre) {
    // 0 to 5 tenths: 9 - 3 - 1
    const auto file = folder_.write("small.dst", dstFile(bytes(0, 0, stitch, 0x06, 0x02, stitch)));
    EXPECT_TRUE(get(file));
    expectAttributes(0.5F, 0, 2, 1);
}

TEST_F(Metadata, LeaveOutColourChanges) {
    const auto records = bytes(standing(500, stitch), standing(1, colorChange), standing(500, stitch));
    EXPECT_TRUE(get(folder_.write("two.dst", dstFile(records))));
    EXPECT_EQ(singleIn(attributes_.get(), CFSTR("de_velamo_embroidery_stitches")), 1000.0F);
}

class SideFile : public Metadata {
protected:
    void writeThreads(const fs::path& design, const std::vector<VLMColor>& colors) {
        VLMDesign threads;
        for (const VLMColor& color : colors)
            threads.threads().push_back(
                VLMThread::initWithColorandNameforKeyofPalettewithName(color, "red", "1", "Janome", "Janome"));
        exportThreadsForDesign(threads, design);
    }

    const fs::path twoThreads_ =
        folder_.write("two.dst", dstFile(bytes(standing(1, stitch), standing(1, colorChange))));
    const VLMColor red_ = VLMColor::initWithRedgreenblue(1, 0, 0);
    const VLMColor blue_ = VLMColor::initWithRedgreenblue(0, 0, 1);
};

TEST_F(SideFile, OfTwoThreadsOfOneColourCountsOne) {
    writeThreads(twoThreads_, {red_, red_});
    EXPECT_TRUE(get(twoThreads_));
    expectAttributes(0, 0, 1, 1);
}

TEST_F(SideFile, OfTwoColoursCountsTwo) {
    writeThreads(twoThreads_, {red_, blue_});
    EXPECT_TRUE(get(twoThreads_));
    expectAttributes(0, 0, 1, 2);
}

TEST_F(Metadata, KeepOtherEntriesAndReplaceTheirOwn) {
    CFDictionarySetValue(attributes_.get(), CFSTR("kMDItemTitle"), CFSTR("rose"));
    for (const CFStringRef key : attributeKeys()) CFDictionarySetValue(attributes_.get(), key, CFSTR("former"));
    EXPECT_TRUE(get(folder_.write("rose.dst", smallDst())));
    EXPECT_EQ(CFDictionaryGetCount(attributes_.get()), 5);
    EXPECT_TRUE(CFEqual(CFDictionaryGetValue(attributes_.get(), CFSTR("kMDItemTitle")), CFSTR("rose")));
    expectAttributes(0, 0.1F, 2, 1);
}

TEST_F(Metadata, AreOwnedByTheDictionaryAlone) {
    // Three stitches, 0.9 mm by 2.7 mm.
    const auto file = folder_.write("rose.dst", dstFile(bytes(0x04, 0x80, stitch, 0x01, 0, stitch, 0x08, 0x20, jump)));
    ASSERT_TRUE(get(file));
    for (const CFStringRef key : attributeKeys())
        EXPECT_TRUE(hasOneOwner(CFDictionaryGetValue(attributes_.get(), key)));
    EXPECT_EQ(CFGetRetainCount(attributes_.get()), 1);
}

class Extensions : public Metadata, public testing::WithParamInterface<const char*> {};
TEST_P(Extensions, MayBeInAnyCase) {
    EXPECT_TRUE(get(folder_.write(GetParam(), smallDst())));
    expectAttributes(0, 0.1F, 2, 1);
}
INSTANTIATE_TEST_SUITE_P(Rows, Extensions, testing::Values("Design.DST", "design.Dst", "design.dst", "a.b.dSt"));

class OddNames : public Metadata, public testing::WithParamInterface<const char*> {};
TEST_P(OddNames, AreFound) {
    const auto file = folder_.write(GetParam(), smallDst());
    if (!fs::exists(file)) GTEST_SKIP() << "no such names in this file system";
    EXPECT_TRUE(get(file));
    expectAttributes(0, 0.1F, 2, 1);
}
INSTANTIATE_TEST_SUITE_P(Rows, OddNames,
                         testing::Values("two words.dst", "two\nlines.dst", "Bl\xC3\xBCte.dst", "Bl\xFCte.dst",
                                         "\xFF\xFE.dst", "%41 100%.dst", "a\\b\"'.dst", "file:.dst", "-n.dst",
                                         "?query#part.dst", "e\xCC\x81 decomposed.dst", "\xC3\xA9 composed.dst"));

/// What holds no design: the call says false and leaves the dictionary as it was.
class Refusal : public Metadata {
protected:
    void expectRefused(const fs::path& file) {
        CFDictionarySetValue(attributes_.get(), CFSTR("de_velamo_embroidery_width"), CFSTR("former"));
        CFDictionarySetValue(attributes_.get(), CFSTR("kMDItemTitle"), CFSTR("rose"));
        EXPECT_FALSE(get(file));
        EXPECT_EQ(CFDictionaryGetCount(attributes_.get()), 2);
        EXPECT_TRUE(
            CFEqual(CFDictionaryGetValue(attributes_.get(), CFSTR("de_velamo_embroidery_width")), CFSTR("former")));
        EXPECT_TRUE(CFEqual(CFDictionaryGetValue(attributes_.get(), CFSTR("kMDItemTitle")), CFSTR("rose")));
    }
};

struct RefusedRow {
    const char* name;
    const char* file;
    Bytes content;
};
class RefusedFiles : public Refusal, public testing::WithParamInterface<RefusedRow> {};
TEST_P(RefusedFiles, LeaveTheDictionaryAlone) {
    expectRefused(folder_.write(GetParam().file, GetParam().content));
}
INSTANTIATE_TEST_SUITE_P(
    Rows, RefusedFiles,
    testing::Values(RefusedRow{"UnknownExtension", "rose.txt", smallDst()},
                    RefusedRow{"NoExtension", "dst", smallDst()}, RefusedRow{"HiddenFile", ".dst", smallDst()},
                    RefusedRow{"Empty", "rose.dst", {}}, RefusedRow{"HeaderAlone", "rose.dst", test::dstHeader()},
                    RefusedRow{"NoStitches", "rose.dst", dstFile(bytes(0, 0, 0xF3))},
                    RefusedRow{"NoHeader", "rose.dst", Bytes(600, 0x03)},
                    RefusedRow{"UnknownKindAfterStitches", "rose.dst", dstFile(bytes(1, 0, stitch, 1, 0, 0))}),
    [](const auto& row) { return row.param.name; });

TEST_F(Refusal, OfAMissingFile) {
    expectRefused(folder_.path() / "missing.dst");
}

TEST_F(Refusal, OfAnEmptyPath) {
    expectRefused("");
}

TEST_F(Refusal, OfAPathThatTheSystemRefuses) {
    expectRefused("/" + std::string(100000, 'a') + ".dst");
}

TEST_F(Refusal, OfAFolder) {
    fs::create_directory(folder_.path() / "x.dst");
    expectRefused(folder_.path() / "x.dst");
    expectRefused(folder_.path() / "x.dst/");
}

TEST_F(Refusal, OfAPipeAtOnce) {
    constexpr unsigned patienceInSeconds = 20;
    const auto pipe = folder_.path() / "y.dst";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    ::alarm(patienceInSeconds);  // ends the test when the call waits for a writer
    expectRefused(pipe);
    ::alarm(0);
}

TEST_F(Refusal, OfADevice) {
    fs::create_symlink("/dev/zero", folder_.path() / "zero.dst");
    expectRefused(folder_.path() / "zero.dst");
}

TEST_F(Refusal, OfAFileThatOneMayNotRead) {
    const auto file = folder_.write("secret.dst", smallDst());
    fs::permissions(file, fs::perms::none);
    EXPECT_TRUE(test::inBoundProcess(folder_.path(),
                                     [&] { return !get(file) && CFDictionaryGetCount(attributes_.get()) == 0; }));
}

TEST_F(Refusal, OfArgumentsThatAreNotThere) {
    const auto path = pathText(folder_.write("rose.dst", smallDst()));
    EXPECT_FALSE(importer_.getMetadata(nullptr, nullptr, nullptr, path.get()));
    EXPECT_FALSE(importer_.getMetadata(nullptr, attributes_.get(), nullptr, nullptr));
    EXPECT_EQ(CFDictionaryGetCount(attributes_.get()), 0);
}

TEST_F(Metadata, DependOnNeitherInstanceNorContentType) {
    const auto path = pathText(folder_.write("rose.dst", smallDst()));
    EXPECT_TRUE(importer_.getMetadata(this, attributes_.get(), CFSTR("public.text"), path.get()));
    expectAttributes(0, 0.1F, 2, 1);
}

/// Lets the process have so many bytes more than it has, until the end of the scope.
class MemoryLimit {
public:
    static bool isPossible() { return fs::exists(memoryOfProcess); }
    explicit MemoryLimit(rlim_t moreBytes) {
        ::getrlimit(RLIMIT_AS, &former_);
        const rlimit limit{usedBytes() + moreBytes, former_.rlim_max};
        ::setrlimit(RLIMIT_AS, &limit);
    }
    ~MemoryLimit() { ::setrlimit(RLIMIT_AS, &former_); }
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

private:
    static constexpr const char* memoryOfProcess = "/proc/self/statm";
    static rlim_t usedBytes() {
        rlim_t pages = 0;
        std::ifstream(memoryOfProcess) >> pages;
        return pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE));
    }
    rlimit former_{};
};

TEST_F(Refusal, ForLackOfMemory) {
    if (test::isAddressSanitized || test::isThreadSanitized)
        GTEST_SKIP() << "the sanitizer ends the process when memory lacks";
    if (!MemoryLimit::isPossible()) GTEST_SKIP() << "the system does not say how much memory is used";
    constexpr std::size_t millions = 1000000;
    const auto file = folder_.write("huge.dst", dstFile(Bytes(30 * millions, stitch)));
    {
        const MemoryLimit limit(40 * millions);  // enough for the file, not for its stitches
        expectRefused(file);
    }
    EXPECT_TRUE(get(file)) << "the same file with enough memory";
}

TEST_F(Metadata, MayBeAskedForOnManyThreads) {
    const auto shared = folder_.write("shared.dst", smallDst());
    std::vector<std::thread> threads;
    threads.reserve(16);
    std::atomic<int> wrong = 0;
    for (std::size_t number = 1; number <= 16; ++number)
        threads.emplace_back([&, number] {
            const auto own = folder_.write(std::to_string(number) + ".dst", dstFile(standing(number, stitch)));
            for (int turn = 0; turn < 50; ++turn) {
                const auto attributes = emptyDictionary();
                const auto stitchesOf = [&](const fs::path& file) {
                    importer_.getMetadata(nullptr, attributes.get(), nullptr, pathText(file).get());
                    return singleIn(attributes.get(), CFSTR("de_velamo_embroidery_stitches"));
                };
                if (stitchesOf(own) != static_cast<float>(number) || stitchesOf(shared) != 2.0F) ++wrong;
            }
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace velamo
