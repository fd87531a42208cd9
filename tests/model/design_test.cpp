#include "velamo/model/design.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <limits>

#include "velamo/platform/plist/keyed_archive.h"
#include "velamo/platform/plist/property_list.h"

namespace velamo {
namespace {

constexpr float largest = std::numeric_limits<float>::max();

HoopHandle someHoop() {
    return std::make_shared<const VLMHoop>(VLMHoop::initWithHoopvendorcodewidthheightmultiHooproundHoopisWritable(
        "SQ23", "Janome", 28, 230, 231, true, false, true));
}

/// A design in which no field has the value of an empty one.
VLMDesign fullDesign() {
    VLMDesign design;
    design.setStitches({{1.5F, -2.25F, false, false}, {3, 4, true, false, true}, {0, 0, false, true}});
    auto thread = VLMThread::initWithColorandNameforKeyofPalettewithName(VLMColor::initWithRedgreenblue(0.1, 0.2, 0.3),
                                                                         "Blüte", "17", "P", "Palette P");
    thread.setLength(12.5F);
    thread.setTension(-7);
    thread.setIsShown(false);
    design.setThreads({thread, VLMThread()});
    design.setDesignName("rose.dst");
    design.setDesignType("DST");
    design.setDesignLocation("/designs/a b%/r\xF6se.dst");  // no UTF-8, and characters that a URL must escape
    design.setDesignHoop(someHoop());
    design.setXMin(-1);
    design.setXMax(2.5F);
    design.setYMin(-largest);
    design.setYMax(1e-30F);
    design.setDesignVersion(-126);
    design.setUseThreadFile(true);
    design.setSelectionActive(true);
    design.setDisplayRange({1, 1});
    return design;
}

void expectSameFields(const VLMDesign& design, const VLMDesign& other) {
    EXPECT_EQ(design.stitches(), other.stitches());
    EXPECT_EQ(design.designName(), other.designName());
    EXPECT_EQ(design.designType(), other.designType());
    EXPECT_EQ(design.designLocation(), other.designLocation());
    EXPECT_EQ(design.xMin(), other.xMin());
    EXPECT_EQ(design.xMax(), other.xMax());
    EXPECT_EQ(design.yMin(), other.yMin());
    EXPECT_EQ(design.yMax(), other.yMax());
    EXPECT_EQ(design.designVersion(), other.designVersion());
    EXPECT_EQ(design.useThreadFile(), other.useThreadFile());
    EXPECT_EQ(design.selectionActive(), other.selectionActive());
}

TEST(Design, StartsEmpty) {
    const VLMDesign design;
    EXPECT_TRUE(design.stitches().isThere());
    EXPECT_TRUE(design.stitches().empty());
    EXPECT_TRUE(design.threads().isThere());
    EXPECT_TRUE(design.threads().empty());
    EXPECT_EQ(design.displayRange(), (StitchRange{0, 0}));
    EXPECT_EQ(design.designName(), std::nullopt);
    EXPECT_EQ(design.designType(), std::nullopt);
    EXPECT_EQ(design.designLocation(), std::nullopt);
    EXPECT_EQ(design.designHoop(), nullptr);
    EXPECT_EQ(design.designVersion(), 0);
    EXPECT_EQ(design.xMin(), 0.0F);
    EXPECT_EQ(design.yMax(), 0.0F);
    EXPECT_FALSE(design.useThreadFile());
    EXPECT_FALSE(design.selectionActive());
}

TEST(Design, SharesItsListsWithWhoeverHoldsThem) {
    VLMDesign design;
    StitchList shared{{1, 2, false, false}};
    design.setStitches(shared);
    shared.push_back({3, 4, false, false});
    EXPECT_EQ(design.stitches().size(), 2U);
    EXPECT_TRUE(design.stitches().isSharedWith(shared));
}

TEST(Design, LeavesSharedListsEmptyWhenItIsReleased) {
    StitchList stitches;
    ThreadList threads;
    {
        const VLMDesign design = fullDesign();
        stitches = design.stitches();
        threads = design.threads();
        EXPECT_EQ(stitches.size(), 3U);
    }
    EXPECT_TRUE(stitches.isThere());
    EXPECT_TRUE(stitches.empty());
    EXPECT_TRUE(threads.empty());
}

TEST(Design, LeavesSharedListsEmptyWhenItIsReplacedAndWholeWhenItIsMoved) {
    VLMDesign design = fullDesign();
    const StitchList former = design.stitches();
    VLMDesign other = fullDesign();
    const StitchList moved = other.stitches();
    design = std::move(other);
    EXPECT_TRUE(former.empty());
    EXPECT_EQ(moved.size(), 3U);
    EXPECT_TRUE(design.stitches().isSharedWith(moved));
}

TEST(Design, CopyOwnsItsListsAndSharesItsHoop) {
    const VLMDesign design = fullDesign();
    VLMDesign copy = design.copy();
    expectSameFields(copy, design);
    EXPECT_EQ(copy.threads(), design.threads());
    EXPECT_EQ(copy.displayRange(), design.displayRange());
    EXPECT_EQ(copy.designHoop(), design.designHoop());  // the same object
    copy.stitches()[0].setIsSelected(true);
    copy.threads()[0].setTension(1);
    EXPECT_FALSE(design.stitches()[0].isSelected());
    EXPECT_EQ(design.threads()[0].tension(), -7);
}

TEST(Design, ResetBoundsAreThoseOfNoStitch) {
    VLMDesign design;
    design.resetBounds();
    EXPECT_EQ(design.xMin(), largest);
    EXPECT_EQ(design.yMin(), largest);
    EXPECT_EQ(design.xMax(), -largest);
    EXPECT_EQ(design.yMax(), -largest);
}

TEST(Archive, GivesTheDesignBack) {
    const VLMDesign design = fullDesign();
    VLMDesign decoded;
    VLMError error;
    ASSERT_TRUE(unarchiveDesign(decoded, archiveDesign(design), &error)) << error.message();
    expectSameFields(decoded, design);
    EXPECT_EQ(decoded.displayRange(), (StitchRange{0, 3}));  // whatever it was
    ASSERT_NE(decoded.designHoop(), nullptr);
    const VLMHoop& hoop = *decoded.designHoop();
    EXPECT_EQ(hoop, *design.designHoop());
    EXPECT_EQ(hoop.code(), 28);
    EXPECT_TRUE(hoop.isMultiHoop());
    EXPECT_FALSE(hoop.isRounded());
    EXPECT_TRUE(hoop.isWritable());

    ASSERT_EQ(decoded.threads().size(), 2U);
    VLMThread expected = design.threads()[0];
    expected.setColor(VLMColor::initWithRedgreenblue(double{0.1F}, double{0.2F}, double{0.3F}));
    EXPECT_EQ(decoded.threads()[0], expected);
    EXPECT_EQ(decoded.threads()[1], design.threads()[1]);  // absent texts come back absent
}

TEST(Archive, OfAnEmptyDesignGivesEmptyListsBack) {
    VLMDesign decoded = fullDesign();
    ASSERT_TRUE(unarchiveDesign(decoded, archiveDesign(VLMDesign()), nullptr));
    EXPECT_TRUE(decoded.stitches().isThere());
    EXPECT_TRUE(decoded.stitches().empty());
    EXPECT_EQ(decoded.designName(), std::nullopt);
    EXPECT_EQ(decoded.designHoop(), nullptr);
    EXPECT_EQ(decoded.displayRange(), (StitchRange{0, 0}));
}

/// An archive whose root, of the class named, has none but the keys that the body encodes.
std::vector<std::uint8_t> archiveOf(std::string_view className, const KeyedArchiver::Body& body) {
    return KeyedArchiver::archiveRoot(className, body);
}

TEST(Archive, MissingKeysLeaveZeroFalseOrNothing) {
    VLMDesign decoded;
    ASSERT_TRUE(unarchiveDesign(decoded, archiveOf("VLMDesign", [](KeyedArchiver&) {}), nullptr));
    EXPECT_FALSE(decoded.stitches().isThere());
    EXPECT_EQ(decoded.numberOfStitches(), 0);
    EXPECT_EQ(decoded.numberOfThreads(), 0);
    EXPECT_EQ(decoded.xMin(), 0.0F);

    const auto oneThread = archiveOf("VLMDesign", [](KeyedArchiver& coder) {
        coder.encodeList("VLMEmbroiderDesignThreads", "VLMThread", 1, [](KeyedArchiver&, std::size_t) {});
    });
    ASSERT_TRUE(unarchiveDesign(decoded, oneThread, nullptr));
    ASSERT_EQ(decoded.threads().size(), 1U);
    EXPECT_EQ(decoded.threads()[0].tension(), 0);  // not the 13 of a new thread
    EXPECT_FALSE(decoded.threads()[0].isShown());
    EXPECT_EQ(decoded.threads()[0].name(), std::nullopt);
}

TEST(Archive, OfWrongKindsIsRefusedAndChangesNothing) {
    const std::vector<std::vector<std::uint8_t>> wrong{
        {},
        archiveOf("VLMThread", [](KeyedArchiver&) {}),
        archiveOf("VLMDesign", [](KeyedArchiver& coder) { coder.encodeText("VLMEmbroiderDesignXMin", "1"); }),
        archiveOf("VLMDesign", [](KeyedArchiver& coder) { coder.encodeFloat("VLMEmbroiderDesignName", 1); }),
        archiveOf("VLMDesign", [](KeyedArchiver& coder) { coder.encodeText("VLMEmbroiderDesignStitches", "no list"); }),
        archiveOf("VLMDesign",
                  [](KeyedArchiver& coder) {
                      coder.encodeList("VLMEmbroiderDesignStitches", "VLMThread", 1,
                                       [](KeyedArchiver&, std::size_t) {});
                  }),
    };
    for (const auto& archive : wrong) {
        VLMDesign design = fullDesign();
        VLMError error;
        EXPECT_FALSE(unarchiveDesign(design, archive, &error));
        EXPECT_EQ(error.domain, systemErrorDomain);
        EXPECT_EQ(error.code, EBADMSG);
        EXPECT_FALSE(error.message().empty());
        EXPECT_EQ(design.stitches().size(), 3U);
    }
}

TEST(Archive, EveryPrefixIsRefused) {
    const auto whole = archiveDesign(fullDesign());
    // The line's end behind the last tag is no part of the archive.
    for (std::size_t length = 0; length + 1 < whole.size(); ++length) {
        VLMDesign design;
        EXPECT_FALSE(unarchiveDesign(design, std::span(whole).first(length), nullptr)) << length;
    }
}

/// The dictionary of the object that a reference in the archive leads to.
const PropertyList& objectAt(const PropertyList& archive, const PropertyList& reference) {
    return archive.find("$objects")->as<PropertyList::Array>()->at(reference.as<PropertyList::Uid>()->index);
}

std::vector<std::string> keysOf(const PropertyList& object) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : *object.as<PropertyList::Dictionary>())
        if (key != "$class") keys.push_back(key);
    return keys;
}

TEST(Archive, HasTheLayoutAndTheKeysOfKeyedArchives) {
    const auto archive = parsePropertyList(archiveDesign(fullDesign()));
    ASSERT_TRUE(archive);
    EXPECT_EQ(*archive->find("$archiver")->as<std::string>(), "NSKeyedArchiver");
    EXPECT_EQ(archive->find("$version")->integer(), 100000);
    const PropertyList& design = objectAt(*archive, *archive->find("$top")->find("root"));
    EXPECT_EQ(keysOf(design), (std::vector<std::string>{
                                  "VLMEmbroiderDesignStitches", "VLMEmbroiderDesignThreads", "VLMEmbroiderDesignName",
                                  "VLMEmbroiderDesignType", "VLMEmbroiderDesignLocation", "VLMEmbroiderDesignHoop",
                                  "VLMEmbroiderDesignXMin", "VLMEmbroiderDesignXMax", "VLMEmbroiderDesignYMin",
                                  "VLMEmbroiderDesignYMax", "VLMEmbroiderDesignVersion",
                                  "VLMEmbroiderDesignUseThreadFile", "VLMEmbroiderDesignSelectionActive"}));
    EXPECT_EQ(*objectAt(*archive, *design.find("VLMEmbroiderDesignName")).as<std::string>(), "rose.dst");
    EXPECT_EQ(*design.find("VLMEmbroiderDesignXMax")->as<double>(), 2.5);
    EXPECT_TRUE(*design.find("VLMEmbroiderDesignUseThreadFile")->as<bool>());

    const auto elements = [&](std::string_view key) {
        return *objectAt(*archive, *design.find(key)).find("NS.objects")->as<PropertyList::Array>();
    };
    const PropertyList& stitch = objectAt(*archive, elements("VLMEmbroiderDesignStitches").at(0));
    EXPECT_EQ(keysOf(stitch),
              (std::vector<std::string>{"VLMEmbroideryStitchDeltaX", "VLMEmbroideryStitchDeltaY",
                                        "VLMEmbroideryStitchIsJumpStitch", "VLMEmbroideryStitchIsColorChange",
                                        "VLMEmbroideryStitchIsSelected"}));
    EXPECT_EQ(*stitch.find("VLMEmbroideryStitchDeltaY")->as<double>(), -2.25);
    const PropertyList& thread = objectAt(*archive, elements("VLMEmbroiderDesignThreads").at(0));
    EXPECT_EQ(keysOf(thread), (std::vector<std::string>{"VLMThreadColor", "VLMThreadName", "VLMThreadKey",
                                                        "VLMThreadPalette", "VLMThreadPaletteName", "VLMThreadLength",
                                                        "VLMThreadTension", "VLMThreadIsShown"}));
    const PropertyList& color = objectAt(*archive, *thread.find("VLMThreadColor"));
    EXPECT_EQ(keysOf(color), (std::vector<std::string>{"VLMColorRed", "VLMColorGreen", "VLMColorBlue"}));
    EXPECT_EQ(*color.find("VLMColorRed")->as<double>(), double{0.1F});
    const PropertyList& hoop = objectAt(*archive, *design.find("VLMEmbroiderDesignHoop"));
    EXPECT_EQ(keysOf(hoop), (std::vector<std::string>{"VLMEmbroideryHoopName", "VLMEmbroideryHoopVendor",
                                                      "VLMEmbroideryHoopCode", "VLMEmbroideryHoopWidth",
                                                      "VLMEmbroideryHoopHeight", "VLMEmbroideryHoopIsMultiHoop",
                                                      "VLMEmbroideryHoopIsRounded", "VLMEmbroideryHoopIsWritable"}));
    EXPECT_EQ(hoop.find("VLMEmbroideryHoopHeight")->integer(), 231);
}

}  // namespace
}  // namespace velamo
