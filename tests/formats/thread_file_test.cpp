#include "velamo/formats/thread_file.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"
#include "velamo/platform/plist/property_list.h"

namespace velamo {
namespace {

using test::TemporaryFolder;

VLMDesign designOfThreads(std::size_t count) {
    VLMDesign design;
    for (std::size_t i = 0; i < count; ++i)
        design.threads().push_back(VLMThread::initWithKeyofPalette("1", "Undefined"));
    return design;
}

std::string listOf(const std::string& entries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<array>" + entries +
           "</array>\n</plist>\n";
}

const std::string blueEntry =
    "<dict><key>threadfileversion</key><integer>2</integer><key>name</key><string>Kornblume</string>"
    "<key>key</key><string>070</string><key>palette</key><string>Brother</string>"
    "<key>paletteName</key><string>Brother Embroidery</string>"
    "<key>red</key><real>0.25</real><key>green</key><real>0.1</real><key>blue</key><integer>1</integer></dict>";

struct RefusedRow {
    const char* name;
    std::string file;
    std::size_t threads;
};
class RefusedThreadFiles : public testing::TestWithParam<RefusedRow> {};
TEST_P(RefusedThreadFiles, LeaveTheThreadsAsTheyWere) {
    const TemporaryFolder folder;
    folder.write("rose.threads", GetParam().file);
    VLMDesign design = designOfThreads(GetParam().threads);
    EXPECT_FALSE(importThreadsForDesign(design, folder.path() / "rose.dst"));
    ASSERT_EQ(design.threads().size(), GetParam().threads);
    for (const VLMThread& thread : design.threads()) EXPECT_EQ(thread.palette(), "Undefined");
}
INSTANTIATE_TEST_SUITE_P(
    Rows, RefusedThreadFiles,
    testing::Values(
        RefusedRow{"ThreeEntriesForFourBlocks", listOf(blueEntry + blueEntry + blueEntry), 4},
        RefusedRow{"FourEntriesForThreeBlocks", listOf(blueEntry + blueEntry + blueEntry + blueEntry), 3},
        RefusedRow{"NoPropertyList", "threads", 1}, RefusedRow{"EmptyFile", "", 1},
        RefusedRow{"DictionaryAsRoot", "<plist version=\"1.0\"><dict/></plist>", 1},
        RefusedRow{"EntryThatIsNoDictionary", listOf("<string>red</string>"), 1},
        RefusedRow{"FormerVersionWithoutColour", listOf("<dict><key>name</key><string>a</string></dict>"), 1},
        RefusedRow{"FormerVersionWithColourOfNoData", listOf("<dict><key>color</key><string>red</string></dict>"), 1},
        RefusedRow{"FormerVersionWithDamagedData", listOf("<dict><key>color</key><data>AAAA</data></dict>"), 1},
        RefusedRow{"UnknownVersionNeedsTheFormersColour",
                   listOf("<dict><key>threadfileversion</key><integer>3</integer><key>red</key><real>1</real></dict>"),
                   1},
        RefusedRow{"CutInTheMiddle", listOf(blueEntry).substr(0, 300), 1}),
    [](const auto& row) { return row.param.name; });

TEST(ThreadFile, MissingOneChangesNothing) {
    const TemporaryFolder folder;
    VLMDesign design = designOfThreads(2);
    EXPECT_FALSE(importThreadsForDesign(design, folder.path() / "rose.dst"));
    EXPECT_EQ(design.threads()[1].palette(), "Undefined");
}

TEST(ThreadFile, GivesThreadsWithUsualTensionAndLength) {
    const TemporaryFolder folder;
    folder.write("rose.threads", listOf(blueEntry));
    VLMDesign design = designOfThreads(1);
    design.threads()[0].setTension(99);
    design.threads()[0].setLength(5);
    ASSERT_TRUE(importThreadsForDesign(design, folder.path() / "rose.dst"));
    const auto expected = VLMThread::initWithColorandNameforKeyofPalettewithName(
        VLMColor::initWithRedgreenblue(0.25, double{0.1F}, 1), "Kornblume", "070", "Brother", "Brother Embroidery");
    EXPECT_EQ(design.threads(), (std::vector<VLMThread>{expected}));
}

TEST(ThreadFile, MissingComponentsAreZeroAndMissingTextsAbsent) {
    const TemporaryFolder folder;
    folder.write(
        "rose.threads",
        listOf("<dict><key>threadfileversion</key><integer>2</integer><key>green</key><real>0.5</real></dict>"));
    VLMDesign design = designOfThreads(1);
    ASSERT_TRUE(importThreadsForDesign(design, folder.path() / "rose.dst"));
    EXPECT_EQ(design.threads()[0].color(), VLMColor::initWithRedgreenblue(0, 0.5, 0));
    EXPECT_EQ(design.threads()[0].name(), std::nullopt);
    EXPECT_EQ(design.threads()[0].key(), std::nullopt);
    EXPECT_EQ(design.threads()[0].palette(), std::nullopt);
    EXPECT_EQ(design.threads()[0].paletteName(), std::nullopt);
}

/// What the editor wrote before version 2: calibrated red 0.5, green 0.25, blue 1, opaque.
const std::string formerEntry =
    "<dict><key>color</key><data>"
    "BAtzdHJlYW10eXBlZIHoA4QBQISEhAdOU0NvbG9yAISECE5TT2JqZWN0AIWEAWMBhARmZmZmgwAAAD+DAACAPgEBhg=="
    "</data><key>name</key><string>Flieder</string></dict>";

TEST(ThreadFile, OfTheFormerVersionIsUnderstood) {
    const TemporaryFolder folder;
    folder.write("rose.threads", listOf(formerEntry));
    VLMDesign design = designOfThreads(1);
    ASSERT_TRUE(importThreadsForDesign(design, folder.path() / "rose.dst"));
    EXPECT_EQ(design.threads()[0].color(), VLMColor::initWithRedgreenblue(0.5, 0.25, 1));
    EXPECT_EQ(design.threads()[0].name(), "Flieder");
}

TEST(ThreadFile, OneUnreadableEntryMakesItUseless) {
    const TemporaryFolder folder;
    folder.write("rose.threads", listOf(blueEntry + "<dict/>"));
    VLMDesign design = designOfThreads(2);
    EXPECT_FALSE(importThreadsForDesign(design, folder.path() / "rose.dst"));
    folder.write("rose.threads", listOf(blueEntry + "<dict/>"));
    VLMDesign smaller = designOfThreads(1);
    // The one readable entry fits the one block.
    EXPECT_TRUE(importThreadsForDesign(smaller, folder.path() / "rose.dst"));
}

TEST(ThreadFile, BinaryListIsReadToo) {
    const TemporaryFolder folder;
    const std::string xml = listOf(blueEntry);
    const auto list = parsePropertyList({reinterpret_cast<const std::uint8_t*>(xml.data()), xml.size()});
    ASSERT_TRUE(list);
    folder.write("rose.threads", binaryPropertyList(*list));
    VLMDesign design = designOfThreads(1);
    ASSERT_TRUE(importThreadsForDesign(design, folder.path() / "rose.dst"));
    EXPECT_EQ(design.threads()[0].name(), "Kornblume");
}

TEST(ThreadFile, WrittenAndReadKeepsAllButTheLowBitsOfColours) {
    const TemporaryFolder folder;
    const auto url = folder.path() / "rose.dst";
    VLMDesign design;
    design.setThreads({VLMThread::initWithColorandNameforKeyofPalettewithName(
                           VLMColor::initWithRedgreenblue(0.1, 1 / 3.0, 1e-20), "<Äpfel & Birnen>", "", "P", "Palette"),
                       VLMThread::initWithColorandNameforKeyofPalettewithName(VLMColor(), {}, {}, {}, {})});
    EXPECT_TRUE(exportThreadsForDesign(design, url));
    EXPECT_EQ(TemporaryFolder::read(folder.path() / "rose.threads").substr(0, 5), "<?xml");
    VLMDesign read = designOfThreads(2);
    ASSERT_TRUE(importThreadsForDesign(read, url));
    VLMThread expected = design.threads()[0];
    expected.setColor(
        VLMColor::initWithRedgreenblue(double{0.1F}, double{static_cast<float>(1 / 3.0)}, double{1e-20F}));
    EXPECT_EQ(read.threads()[0], expected);
    EXPECT_EQ(read.threads()[1].name(), std::nullopt);
    EXPECT_EQ(read.threads()[1].color(), VLMColor::initWithRedgreenblue(double{0.8F}, double{0.8F}, double{0.8F}));
}

TEST(ThreadFile, HasTheEightKeys) {
    const TemporaryFolder folder;
    const VLMDesign design = designOfThreads(1);
    EXPECT_TRUE(exportThreadsForDesign(design, folder.path() / "rose.dst"));
    const auto text = TemporaryFolder::read(folder.path() / "rose.threads");
    const auto list = parsePropertyList({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    ASSERT_TRUE(list && list->as<PropertyList::Array>() && list->as<PropertyList::Array>()->size() == 1);
    const PropertyList& entry = list->as<PropertyList::Array>()->front();
    EXPECT_EQ(entry.as<PropertyList::Dictionary>()->size(), 8U);
    EXPECT_EQ(entry.find("threadfileversion")->integer(), 2);
    EXPECT_EQ(*entry.find("key")->as<std::string>(), "1");
    EXPECT_EQ(*entry.find("palette")->as<std::string>(), "Undefined");
    EXPECT_EQ(*entry.find("paletteName")->as<std::string>(), "");
    EXPECT_EQ(*entry.find("name")->as<std::string>(), "Individual color (204, 204, 204)");
    EXPECT_EQ(entry.find("red")->number(), double{0.8F});
    EXPECT_EQ(entry.find("green")->number(), double{0.8F});
    EXPECT_EQ(entry.find("blue")->number(), double{0.8F});
}

TEST(ThreadFile, ThatCannotBeWrittenIsNoFailure) {
    EXPECT_TRUE(exportThreadsForDesign(designOfThreads(1), "/nowhere/rose.dst"));
}

TEST(ThreadFile, IsRemoved) {
    const TemporaryFolder folder;
    const VLMDesign design = designOfThreads(1);
    const auto url = folder.path() / "rose.dst";
    EXPECT_TRUE(deleteThreadsFromDesign(design, url));  // none there
    folder.write("rose.threads", "x");
    EXPECT_TRUE(deleteThreadsFromDesign(design, url));
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "rose.threads"));
    folder.write("rose.threads/inside", "x");  // a folder in its place that is not empty
    EXPECT_FALSE(deleteThreadsFromDesign(design, url));
}

TEST(ThreadFile, StandsBesideTheDesignUnderItsName) {
    EXPECT_EQ(threadFileOf("/a/rose.dst"), "/a/rose.threads");
    EXPECT_EQ(threadFileOf("/a/rose.red.jef+"), "/a/rose.red.threads");
    EXPECT_EQ(threadFileOf("/a/rose"), "/a/rose.threads");
}

}  // namespace
}  // namespace velamo
