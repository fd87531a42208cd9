#include "cli/dump.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>
#include <sstream>
#include <streambuf>

#include "cli/design_json.h"
#include "tests/cli/support.h"

namespace velamo {
namespace {

using test::call;

TEST(Dump, WritesAWholeDesign) {
    const test::TemporaryFolder folder;
    const auto outcome = call({"dump", folder.write("small.dst", test::smallDst)});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.problems, "");
    const std::string thread =
        R"~({"color":[0.8,0.8,0.8],"name":"Individual color (204, 204, 204)","key":"%","palette":"Undefined",)~"
        R"~("paletteName":"","length":0.0,"tension":13,"isShown":true})~";
    const auto threadWithKey = [&thread](const char* key) {
        return std::string(thread).replace(thread.find('%'), 1, key);
    };
    EXPECT_EQ(outcome.out, R"~({
  "ok": true,
  "error": null,
  "designName": "small.dst",
  "designType": "DST",
  "designVersion": 10,
  "useThreadFile": false,
  "selectionActive": false,
  "displayRange": [0,4],
  "bounds": [1.0,1.0,11.0,82.0],
  "hoop": null,
  "threads": [)~" + threadWithKey("1") +
                               "," + threadWithKey("2") +
                               R"~(],
  "stitches": [[1,1,0],[10,0,1],[0,0,2],[-1,81,0]],
  "statistics": {"designWidth":10,"designHeight":81,"centerOfDesign":[6.0,41.5],"numberOfThreads":2,)~"
                               R"~("numberOfJumps":1,"numberOfDifferentColors":1,"numberOfStitches":3,)~"
                               R"~("firstStitch":[0.0,0.0],"lastStitch":[10.0,82.0],"designPalette":"Undefined",)~"
                               R"~("designPaletteName":"","isWritable":true,"isShownOfAllThreads":true,)~"
                               R"~("indexOfShownThread":0,"description":"small.dst (DST Version 1.0)\nsize: )~"
                               R"~(1.0 mm x 8.1 mm\n3 stitches including 1 jumps\n2 color changes with 1 different )~"
                               R"~(colors\n1. Individual color (204, 204, 204)\n2. Individual color (204, 204, 204)"}
}
)~");
}

TEST(Dump, OfAFailedImportLeavesWhatWasRead) {
    const test::TemporaryFolder folder;
    const auto file = folder.write("bad.dst", test::dstFile(test::bytes(0x81, 0x00, 0x03, 0x00, 0x00, 0x40)));
    const auto outcome = call({"dump", file});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.problems,
              "velamo: " + file.native() + ": Unable to import DST file (invalid function codes). (error 111)\n");
    const auto json = outcome.json();
    EXPECT_EQ(json["ok"], false);
    EXPECT_EQ(json["error"], test::Json::parse(R"({"domain": "de.velamo.vlmdesign.ErrorDomain", "code": 111,
                                    "message": "Unable to import DST file (invalid function codes)."})"));
    EXPECT_EQ(json["designType"], "DST");
    EXPECT_EQ(json["displayRange"], test::Json::parse("[0, 0]"));
    EXPECT_EQ(json["stitches"], test::Json::parse("[[1, 1, 0]]"));
    EXPECT_EQ(json["threads"].size(), 1U);
}

TEST(Dump, OfAnUnknownKindHasNoType) {
    const test::TemporaryFolder folder;
    const auto file = folder.write("rose.xyz", "");
    const auto outcome = call({"dump", file});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.problems, "velamo: " + file.native() + ": Unknown file format (UTI). (error 10)\n");
    const auto json = outcome.json();
    EXPECT_EQ(json["designType"], nullptr);
    EXPECT_EQ(json["designName"], "rose.xyz");
    EXPECT_EQ(json["stitches"], test::Json::array());
    EXPECT_EQ(json["threads"], test::Json::array());
    EXPECT_EQ(json["statistics"]["indexOfShownThread"], std::numeric_limits<std::int64_t>::max());
}

TEST(Dump, ReplacesBytesThatAreNoText) {
    const test::TemporaryFolder folder;
    const auto outcome = call({"dump", folder.write("a\xff\"\n.dst", test::smallDst)});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.json()["designName"], "a\uFFFD\"\n.dst");
}

/// Takes what is written to it in pieces and keeps none of it, but the size of the largest.
class PieceMeter final : public std::streambuf {
public:
    [[nodiscard]] std::streamsize largest() const noexcept { return largest_; }
    [[nodiscard]] std::streamsize sum() const noexcept { return sum_; }

protected:
    std::streamsize xsputn(const char*, std::streamsize count) override {
        largest_ = std::max(largest_, count);
        sum_ += count;
        return count;
    }
    int_type overflow(int_type character) override {
        ++sum_;
        return traits_type::not_eof(character);
    }

private:
    std::streamsize largest_ = 0;
    std::streamsize sum_ = 0;
};

TEST(DesignJson, IsWrittenInSmallPieces) {
    VLMDesign design;
    design.setStitches({{1, 1, false, false, false}, {1, 1, false, true, false}});
    design.threads().all().assign(5000, VLMThread::initWithKeyofPalette("001", "Brother"));
    PieceMeter meter;
    std::ostream out(&meter);
    writeDesignJson(out, design, nullptr);
    EXPECT_LT(meter.largest(), 2000);
    EXPECT_GT(meter.sum(), 5000 * 100);
}

std::string designText(const VLMDesign& design) {
    std::ostringstream out;
    writeDesignJson(out, design, nullptr);
    return out.str();
}

TEST(DesignJson, WritesNumbersThatAreNoneAsTexts) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    VLMDesign design;
    design.stitches().push_back({infinity, -infinity, true, true, true});
    design.stitches().push_back({std::numeric_limits<float>::quiet_NaN(), -0.0F, false, false});
    design.setXMin(-infinity);
    design.setXMax(std::numeric_limits<float>::quiet_NaN());
    const auto text = designText(design);
    EXPECT_NE(text.find(R"([["inf","-inf",7],["nan",-0.0,0]])"), std::string::npos) << text;
    const auto json = test::Json::parse(text);
    EXPECT_EQ(json["bounds"], test::Json::parse(R"(["-inf", 0.0, "nan", 0.0])"));
    EXPECT_EQ(json["statistics"]["lastStitch"][0], "nan");
    EXPECT_TRUE(std::signbit(json["stitches"][1][1].get<float>()));
}

TEST(DesignJson, GivesBackTheSameFloats) {
    VLMDesign design;
    std::vector<float> numbers{0.1F, 1.0F / 3, 16777217.0F, 3.4028235e38F, 1e-45F, -12.34F, 9.999999e-7F, 123456.79F};
    for (const float number : numbers) design.stitches().push_back({number, -number, false, false});
    design.setXMin(0.1F);
    design.setYMin(1.0F / 3);
    const auto json = test::Json::parse(designText(design));
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        EXPECT_EQ(json["stitches"][i][0].get<float>(), numbers[i]);
        EXPECT_EQ(json["stitches"][i][1].get<float>(), -numbers[i]);
    }
    EXPECT_EQ(json["bounds"][0].get<float>(), 0.1F);
    EXPECT_EQ(json["bounds"][1].get<float>(), 1.0F / 3);
}

TEST(DesignJson, WritesHoopAndAbsentTexts) {
    VLMDesign design;
    design.setDesignHoop(
        std::make_shared<VLMHoop>(VLMHoop::initWithHoopvendorcodewidthheightmultiHooproundHoopisWritable(
            "SQ14", "Janome", 3, 140, 141, false, true, true)));
    VLMThread thread;
    thread.setColor(VLMColor::initWithRedgreenblue(1.0 / 3, 0, 1));
    thread.setLength(0.1F);
    thread.setKey("007");
    design.threads().push_back(thread);
    const auto json = test::Json::parse(designText(design));
    EXPECT_EQ(json["hoop"], test::Json::parse(R"({"name": "SQ14", "vendor": "Janome", "code": 3, "width": 140,
        "height": 141, "isMultiHoop": false, "isRounded": true, "isWritable": true})"));
    EXPECT_EQ(json["threads"][0], test::Json::parse(R"({"color": [0.3333333333333333, 0.0, 1.0], "name": null,
        "key": "007", "palette": null, "paletteName": null, "length": 0.1, "tension": 0, "isShown": false})"));
    EXPECT_EQ(json["designName"], nullptr);
}

}  // namespace
}  // namespace velamo
