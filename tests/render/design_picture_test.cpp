#include "velamo/render/design_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "tests/support/png.h"
#include "tests/support/stitches.h"
#include "tests/support/vector_files.h"
#include "velamo/platform/system/files.h"

namespace velamo {
namespace {

using test::change;
using test::jump;
using test::Picture;
using test::stitch;

VLMDesign designOfSize(float xMin, float yMin, float width, float height) {
    VLMDesign design;
    design.setXMin(xMin);
    design.setYMin(yMin);
    design.setXMax(xMin + width);
    design.setYMax(yMin + height);
    return design;
}

struct SizeRow {
    const char* name;
    float width;
    float height;
    double scale;
    int pixelWidth;  // 0: no bitmap
    int pixelHeight;
};
class BitmapOfDesign : public testing::TestWithParam<SizeRow> {};
TEST_P(BitmapOfDesign, HasTheSizeOfTheRow) {
    const auto& row = GetParam();
    const auto bitmap = bitmapOf(designOfSize(-5, 7, row.width, row.height), row.scale, {});
    EXPECT_EQ(bitmap ? bitmap->width() : 0, row.pixelWidth);
    EXPECT_EQ(bitmap ? bitmap->height() : 0, row.pixelHeight);
}
constexpr float largest = std::numeric_limits<float>::max();
INSTANTIATE_TEST_SUITE_P(
    Rows, BitmapOfDesign,
    testing::Values(SizeRow{"PixelATenth", 80, 30, 1, 100, 50}, SizeRow{"RoundedUp", 81, 30, 0.25, 26, 13},
                    SizeRow{"Enlarged", 10, 5, 3.5, 105, 88}, SizeRow{"Tiny", 10, 5, 1e-300, 1, 1},
                    SizeRow{"Widest", 32747, 0, 1, 32767, 20}, SizeRow{"TooWide", 32748, 0, 1, 0, 0},
                    SizeRow{"TooLargeAScale", 10, 10, 1e300, 0, 0}, SizeRow{"Negative", -30, 10, 1, 0, 0},
                    SizeRow{"Sentinel", -largest, -largest, 1e300, 0, 0}),
    [](const auto& row) { return row.param.name; });

TEST(LongerSide, HasExactlySoManyPixels) {
    for (std::int32_t pixels = 1; pixels <= 700; ++pixels)
        for (int width = 0; width < 500; width += 7) {
            const auto design = designOfSize(0, 0, static_cast<float>(width), 200);
            const auto size = pictureSizeOf(design, scaleForLongerSide(design, pixels));
            ASSERT_EQ(std::max(size.width, size.height), pixels) << width;
        }
}

// ---- golden pictures

VLMThread threadOf(double red, double green, double blue) {
    return VLMThread::initWithColorandNameforKeyofPalettewithName(VLMColor::initWithRedgreenblue(red, green, blue), "",
                                                                  "", "", "");
}

/// A column of zigzag stitches from where the needle stands: `across` to and fro, `along` by and by.
void sewColumn(std::vector<VLMStitch>& stitches, DesignPoint across, DesignPoint along, int turns) {
    const auto add = [&stitches](double x, double y) {
        stitches.push_back(stitch(static_cast<float>(x), static_cast<float>(y)));
    };
    for (int turn = 0; turn < turns; ++turn) {
        add(across.x + along.x / 2, across.y + along.y / 2);
        add(along.x / 2 - across.x, along.y / 2 - across.y);
    }
}

/// A blue letter F of three columns and, in yellow, a few stitches in all directions to its lower right.
VLMDesign letterF() {
    std::vector<VLMStitch> stitches{stitch(0, 0)};
    sewColumn(stitches, {12, 0}, {0, 4}, 20);
    stitches.insert(stitches.end(), {jump(12, -12), stitch(0, 0)});
    sewColumn(stitches, {0, 12}, {4, 0}, 10);
    stitches.insert(stitches.end(), {jump(-40, -34), stitch(0, 0)});
    sewColumn(stitches, {0, 12}, {4, 0}, 6);
    stitches.insert(stitches.end(), {change(4, -20), jump(0, 0), stitch(0, 0)});
    for (int i = 0; i < 8; ++i) {
        const double angle = i * std::acos(-1.0) / 4;
        stitches.push_back(stitch(static_cast<float>(10 * std::cos(angle)), static_cast<float>(10 * std::sin(angle))));
    }
    VLMDesign design = designOfSize(0, 0, 54, 80);
    design.setStitches(std::move(stitches));
    design.setThreads({threadOf(0.1, 0.3, 0.8), threadOf(0.95, 0.75, 0.1)});
    design.setDisplayRange({0, design.stitches().size()});
    return design;
}

VLMDesign selectedF() {
    auto design = letterF();
    for (std::size_t i = 10; i < 30; ++i) design.stitches()[i].setIsSelected(true);
    design.setSelectionActive(true);
    return design;
}

VLMDesign hiddenF() {
    auto design = letterF();
    design.setIsShownofThread(false, 1);
    return design;
}

Picture pictureOf(const Bitmap& bitmap) {
    return {bitmap.width(), bitmap.height(), bitmap.rgba()};
}

/// The mean difference of a component. Other versions of cairo smooth edges a little differently.
double difference(const Picture& one, const Picture& other) {
    if (one.width != other.width || one.height != other.height) return std::numeric_limits<double>::infinity();
    double sum = 0;
    for (std::size_t i = 0; i < one.rgba.size(); ++i) sum += std::abs(one.rgba[i] - other.rgba[i]);
    return sum / static_cast<double>(one.rgba.size());
}

Picture mirrored(const Picture& picture) {
    Picture result = picture;
    for (int row = 0; row < picture.height; ++row)
        for (int column = 0; column < picture.width; ++column) {
            const auto from = static_cast<std::ptrdiff_t>(row * picture.width + picture.width - 1 - column) * 4;
            const auto to = static_cast<std::ptrdiff_t>(row * picture.width + column) * 4;
            std::copy_n(picture.rgba.begin() + from, 4, result.rgba.begin() + to);
        }
    return result;
}

constexpr double tolerance = 1;

struct GoldenRow {
    const char* name;
    VLMDesign (*design)();
    DesignLook look;
};
class GoldenPicture : public testing::TestWithParam<GoldenRow> {
protected:
    static Picture golden() {
        return test::readPng(std::filesystem::path(VELAMO_TEST_DATA) / "pictures" /
                             (std::string(GetParam().name) + ".png"));
    }
};

TEST_P(GoldenPicture, IsDrawnAgain) {
    const auto bitmap = bitmapOf(GetParam().design(), 2, GetParam().look);
    ASSERT_TRUE(bitmap);
    const auto drawn = std::filesystem::temp_directory_path() / (std::string(GetParam().name) + ".drawn.png");
    ASSERT_FALSE(replaceFile(drawn, *bitmap->png()));  // kept where it is not as it should be, to be looked at
    ASSERT_LT(difference(pictureOf(*bitmap), golden()), tolerance) << "see " << drawn;
    std::filesystem::remove(drawn);
}

TEST_P(GoldenPicture, IsToldFromItsMirrorImage) {
    EXPECT_GT(difference(mirrored(golden()), golden()), 3 * tolerance);
}

INSTANTIATE_TEST_SUITE_P(Rows, GoldenPicture,
                         testing::Values(GoldenRow{"flat", letterF, {}}, GoldenRow{"relief", letterF, {.show3D = true}},
                                         GoldenRow{"jumps", letterF, {.showJumps = true}},
                                         GoldenRow{"structure", letterF, {.showJumps = true, .showStructure = true}},
                                         GoldenRow{"selection", selectedF, {}},
                                         GoldenRow{"selection-in-relief", selectedF, {.show3D = true}},
                                         GoldenRow{"hidden-thread", hiddenF, {}},
                                         GoldenRow{"second-thread-alone", letterF, {.showThread = 1}}),
                         [](const auto& row) {
                             std::string name = row.param.name;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST(GoldenPictures, DifferByMoreThanTheTolerance) {
    const auto flat = pictureOf(*bitmapOf(letterF(), 2, {}));
    EXPECT_GT(difference(flat, pictureOf(*bitmapOf(letterF(), 2, {.show3D = true}))), 3 * tolerance);
    EXPECT_GT(difference(flat, pictureOf(*bitmapOf(hiddenF(), 2, {}))), 3 * tolerance);
    EXPECT_GT(difference(flat, pictureOf(*bitmapOf(selectedF(), 2, {}))), 3 * tolerance);
}

// ---- true size

std::string textOf(const std::optional<std::vector<std::uint8_t>>& bytes) {
    return bytes ? std::string(bytes->begin(), bytes->end()) : "(nothing)";
}

TEST(VectorPictures, HaveTheDesignsSizeAndOneMillimetreRoundIt) {
    EXPECT_NE(textOf(svgOf(letterF(), {})).find("width=\"7.4mm\" height=\"10mm\""), std::string::npos);
    EXPECT_NE(textOf(pdfOf(letterF(), {})).find("/MediaBox [ 0 0 20.976378 28.346457 ]"), std::string::npos);
    EXPECT_FALSE(svgOf(designOfSize(0, 0, -30, 5), {}));
    EXPECT_FALSE(pdfOf(designOfSize(0, 0, 5, -20), {}));
}

void widenBounds(VLMDesign& design) {
    DesignPoint place;
    for (const VLMStitch& each : design.stitches()) {
        place = {place.x + each.deltaX(), place.y + each.deltaY()};
        design.setXMin(std::min(design.xMin(), static_cast<float>(place.x)));
        design.setYMin(std::min(design.yMin(), static_cast<float>(place.y)));
        design.setXMax(std::max(design.xMax(), static_cast<float>(place.x)));
        design.setYMax(std::max(design.yMax(), static_cast<float>(place.y)));
    }
}

/// Rows of stitches to and fro, in two colours.
VLMDesign fillOf(std::size_t count) {
    std::mt19937 random(3);
    std::vector<VLMStitch> stitches{stitch(0, 0)};
    float x = 0;
    float direction = 1;
    for (std::size_t i = 1; i < count; ++i) {
        const auto length = static_cast<float>(20 + random() % 11);
        if (x + direction * length < 0 || x + direction * length > 1500) direction = -direction;
        x += direction * length;
        stitches.push_back(i == count / 2 ? change(direction * length, 0)
                                          : stitch(direction * length, static_cast<float>(random() % 7) - 3));
    }
    VLMDesign design = designOfSize(0, 0, 0, 0);
    design.setStitches(std::move(stitches));
    design.setThreads({threadOf(0.1, 0.3, 0.8), threadOf(0.95, 0.75, 0.1)});
    design.setDisplayRange({0, count});
    widenBounds(design);
    return design;
}

/// The same off the tenths of a millimetre, as turned designs are.
VLMDesign turnedFillOf(std::size_t count) {
    VLMDesign design = fillOf(count);
    const float cosine = std::cos(0.4F);
    const float sine = std::sin(0.4F);
    for (VLMStitch& each : design.stitches().all())
        each = VLMStitch(each.deltaX() * cosine - each.deltaY() * sine, each.deltaX() * sine + each.deltaY() * cosine,
                         false, each.isColorChange());
    widenBounds(design);
    return design;
}

TEST(VectorPictures, HoldNumbersWhateverTheStitchesAre) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float hostile[] = {0, 1, -1, 0.1F, 1e5F, -1e9F, 3e38F, 1e-40F, infinity, -infinity, NAN};
    std::mt19937 random(11);
    const auto any = [&] { return hostile[random() % std::size(hostile)]; };
    for (int i = 0; i < 300; ++i) {
        std::vector<VLMStitch> stitches(8);
        for (VLMStitch& stitch : stitches) stitch = {any(), any(), random() % 3 == 0, false};
        VLMDesign design = designOfSize(i % 5 == 0 ? -1e9F : 0, 0, 50, 50);
        design.setStitches(std::move(stitches));
        design.setThreads({threadOf(0.1, NAN, 7)});
        design.setDisplayRange({0, 8});
        const DesignLook look{i % 2 == 0, i % 3 == 0, i % 7 < 3};
        for (const auto& path : test::pathsOfSvg(textOf(svgOf(design, look))))
            for (const auto& [x, y] : path.points) ASSERT_TRUE(std::isfinite(x) && std::isfinite(y)) << i;
        const std::string pdf = textOf(pdfOf(design, look));
        ASSERT_TRUE(test::hasTrueTable(pdf)) << i;
        ASSERT_EQ(test::contentOfPdf(pdf).find_first_not_of("0123456789.- \nqQcmlhfsShWnrgRGwJdMa/[]e"),
                  std::string::npos)
            << i;
    }
}

struct BytesRow {
    const char* name;
    bool (*write)(const VLMDesign&, const DesignLook&, const ByteSink&);
    DesignLook look;
    double mostOfStitch;
};
void PrintTo(const BytesRow& row, std::ostream* out) {
    *out << row.name;
}
class BytesOfPicture : public testing::TestWithParam<BytesRow> {};
TEST_P(BytesOfPicture, AreFewForAStitch) {
    const auto& row = GetParam();
    constexpr std::size_t count = 20000;
    for (VLMDesign (*const design)(std::size_t) : {fillOf, turnedFillOf}) {
        std::size_t bytes = 0;
        EXPECT_TRUE(row.write(design(count), row.look, [&](std::span<const std::uint8_t> piece) {
            bytes += piece.size();
            return true;
        }));
        EXPECT_LE(static_cast<double>(bytes) / count, row.mostOfStitch) << (design == fillOf ? "straight" : "turned");
        EXPECT_GE(static_cast<double>(bytes) / count, row.mostOfStitch / 5);
    }
}
INSTANTIATE_TEST_SUITE_P(Rows, BytesOfPicture,
                         testing::Values(BytesRow{"svg", writeSvgOf, {}, 70},
                                         BytesRow{"svgInRelief", writeSvgOf, {.show3D = true}, 250},
                                         BytesRow{"pdf", writePdfOf, {}, 20},
                                         BytesRow{"pdfInRelief", writePdfOf, {.show3D = true}, 60},
                                         BytesRow{"pdfWithStructure", writePdfOf, {.showStructure = true}, 25}),
                         [](const auto& row) { return row.param.name; });

TEST(VectorPictures, HaveOutlineAndThreadOfEachStitchWhereItLies) {
    const auto paths = test::pathsOfSvg(textOf(svgOf(letterF(), {.showThread = 1})));
    ASSERT_EQ(paths.size(), 18U);  // the way to the second thread's place and its eight stitches
    DesignPoint end;
    for (std::size_t i = 0; i < paths.size(); i += 2) {
        EXPECT_NE(paths[i].rule.find("stroke:#bf8c00;"), std::string::npos) << i;
        EXPECT_NE(paths[i + 1].rule.find("stroke:#f2bf1a;"), std::string::npos) << i;
        EXPECT_EQ(paths[i].points, paths[i + 1].points);
        const std::pair lastEnd(end.x, end.y);
        EXPECT_TRUE(i == 0 || paths[i].points[0] == lastEnd) << i;
        end = {paths[i].points[1].first, paths[i].points[1].second};
        const double length =
            std::hypot(end.x - paths[i].points[0].first, end.y - paths[i].points[0].second) / 50;  // fiftieths
        EXPECT_NEAR(length, i == 0 ? std::hypot(0.4, 2) : 1, 0.03) << i;
    }
}

}  // namespace
}  // namespace velamo
