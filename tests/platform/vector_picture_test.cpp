#include "velamo/platform/graphics/vector_picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <string>

#include "tests/support/vector_files.h"

namespace velamo {
namespace {

using test::contentOfPdf;
using test::hasTrueTable;
using test::pathsOfSvg;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string textOf(const std::optional<std::vector<std::uint8_t>>& bytes) {
    return bytes ? std::string(bytes->begin(), bytes->end()) : "(nothing)";
}

void strokeLine(GraphicsContext& context, GraphicsPoint start, GraphicsPoint end) {
    context.moveTo(start);
    context.addLineTo(end);
    context.strokePath();
}

void strokeALine(GraphicsContext& context) {
    context.setLineWidth(0.5);
    strokeLine(context, {1, 2}, {11, 2});
}

/// A stitch in two inks, a black outline of 0.35 mm and a red thread.
void drawStitch(GraphicsContext& context, GraphicsPoint start, GraphicsPoint end) {
    context.setStrokeColor({0, 0, 0, 1});
    context.setLineWidth(0.35);
    strokeLine(context, start, end);
    context.setStrokeColor({1, 0, 0, 1});
    context.setLineWidth(0.245);
    strokeLine(context, start, end);
}

TEST(SvgPicture, IsInMillimetresWithTheOriginAtTheLowerLeft) {
    EXPECT_EQ(textOf(svgPicture(38.6, 64, strokeALine)),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"38.6mm\" height=\"64mm\" viewBox=\"0 0 386 640\" "
              "stroke-miterlimit=\"10\">\n"
              "<style>\n"
              ".a{fill:none;stroke:#000000;stroke-opacity:1;stroke-width:5;stroke-linecap:butt;"
              "stroke-dasharray:none}\n"
              "</style>\n"
              "<g class=\"a\"><path d=\"m10 620h100\"/></g>\n"
              "</svg>\n");
}

TEST(PdfPicture, HasItsSizeInPoints) {
    const std::string pdf = textOf(pdfPicture(25.4, 50.8, strokeALine));
    EXPECT_THAT(pdf, StartsWith("%PDF-1.4\n"));
    EXPECT_THAT(pdf, HasSubstr("/MediaBox [ 0 0 72 144 ]"));
    EXPECT_TRUE(hasTrueTable(pdf));
    EXPECT_EQ(contentOfPdf(pdf), ".283464566929 0 0 .283464566929 0 0 cm 10 M\n0 0 0 RG 5 w 10 20 m 110 20 l S\n");
}

TEST(VectorPicture, HoldsNoDateAndIsTheSameEachTime) {
    EXPECT_EQ(svgPicture(25.4, 50.8, strokeALine), svgPicture(25.4, 50.8, strokeALine));
    const auto pdf = pdfPicture(25.4, 50.8, strokeALine);
    EXPECT_EQ(pdf, pdfPicture(25.4, 50.8, strokeALine));
    for (const char* const word : {"Date", "Producer", "/ID"}) EXPECT_THAT(textOf(pdf), Not(HasSubstr(word)));
}

TEST(VectorPicture, LineOfNoWidthIsThinAndThere) {
    const auto hairline = [](GraphicsContext& context) {
        context.setLineWidth(0);
        strokeLine(context, {0, 0}, {5, 5});
    };
    EXPECT_THAT(textOf(svgPicture(10, 10, hairline)), HasSubstr("stroke-width:.423;"));  // tenths of a millimetre
    EXPECT_THAT(contentOfPdf(textOf(pdfPicture(10, 10, hairline))), HasSubstr(" .423 w "));
}

TEST(VectorPicture, OfManyKilometresHasItsTrueSize) {
    EXPECT_THAT(textOf(svgPicture(1e9, 10, strokeALine)), HasSubstr("width=\"1000000000mm\" height=\"10mm\""));
}

TEST(VectorPicture, NeedsASize) {
    for (const double length : {0.0, -5.0, 1.1e9, static_cast<double>(NAN), static_cast<double>(INFINITY)}) {
        EXPECT_FALSE(svgPicture(length, 10, strokeALine)) << length;
        EXPECT_FALSE(pdfPicture(10, length, strokeALine)) << length;
    }
}

// ---- what is drawn

/// Drawings, and what stands in the files of them: in the SVG file's groups, and in the PDF page behind its first line.
struct ContentRow {
    const char* name;
    void (*draw)(GraphicsContext& context);
    std::string svg;
    std::string pdf;
};
void PrintTo(const ContentRow& row, std::ostream* out) {
    *out << row.name;
}
class VectorContent : public testing::TestWithParam<ContentRow> {};
TEST_P(VectorContent, IsThatOfTheRow) {
    const auto& row = GetParam();
    const std::string svg = textOf(svgPicture(20, 10, row.draw));
    const std::size_t groups = svg.find("</style>\n") + 9;
    EXPECT_EQ(svg.substr(groups, svg.rfind("</svg>") - groups), row.svg);
    const std::string pdf = contentOfPdf(textOf(pdfPicture(20, 10, row.draw)));
    EXPECT_EQ(pdf.substr(pdf.find('\n') + 1), row.pdf);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, VectorContent,
    testing::Values(
        ContentRow{"OutlineThenThreadStitchByStitch",
                   [](GraphicsContext& context) {
                       drawStitch(context, {1, 1}, {3, 2});
                       drawStitch(context, {3, 2}, {5, 1.5});
                   },
                   R"(<g class="b"><path class="a" d="m10 90 20-10"/><path d="m10 90 20-10"/>)"
                   R"(<path class="a" d="m30 80 20 5"/><path d="m30 80 20 5"/></g>)"
                   "\n",
                   "0 0 0 RG 3.5 w 10 10 m 30 20 l S\n1 0 0 RG 2.45 w 10 10 m 30 20 l S\n"
                   "0 0 0 RG 3.5 w 30 20 m 50 15 l S\n1 0 0 RG 2.45 w 30 20 m 50 15 l S\n"},
        ContentRow{"OnTenthsOfAMillimetreAndTheirHalves",
                   [](GraphicsContext& context) {
                       context.addRectangle({1.95, 2.95, 0.1, 0.1});
                       context.fillPath();
                   },
                   "<g class=\"a\"><path d=\"m39 141h2v-2h-2z\"/></g>\n", "0 0 0 rg 39 59 2 2 re f\n"},
        ContentRow{"ElsewhereOnFiftiethsOfAMillimetre",
                   [](GraphicsContext& context) {
                       strokeLine(context, {1.111, 2}, {3, 4.229});
                   },
                   "<g class=\"a\"><path d=\"m56 400 94-111\"/></g>\n", "0 0 0 RG 50 w 56 100 m 150 211 l S\n"},
        ContentRow{"ScaledAndMoved",
                   [](GraphicsContext& context) {
                       context.scale(0.5, 0.5);
                       context.translate(-2, 4);
                       strokeLine(context, {4, 0}, {4, 8});
                   },
                   "<g class=\"a\"><path d=\"m10 80v-40\"/></g>\n", "0 0 0 RG 5 w 10 20 m 10 60 l S\n"},
        ContentRow{"RestoredState",
                   [](GraphicsContext& context) {
                       context.saveState();
                       context.translate(5, 5);
                       context.setStrokeColor({1, 1, 1, 1});
                       context.restoreState();
                       context.restoreState();  // of which there is none
                       strokeLine(context, {1, 1}, {2, 1});
                   },
                   "<g class=\"a\"><path d=\"m10 90h10\"/></g>\n", "0 0 0 RG 10 w 10 10 m 20 10 l S\n"},
        ContentRow{
            "DashesOnTheWayIntoThePage",
            [](GraphicsContext& context) {
                context.setLineDash(0, 0.2, 0.3);
                strokeLine(context, {1, 1}, {5, 1});
                strokeLine(context, {-101.1, 2}, {5, 2});
                context.clearLineDash();
                strokeLine(context, {5, 2}, {6, 2});
            },
            "<g class=\"a\"><path d=\"m10 90h40\"/><path stroke-dashoffset=\"1\" d=\"m-10 80h60\"/>"
            "<path class=\"b\" d=\"m50 80h10\"/></g>\n",
            "0 0 0 RG 10 w [2 3] 0 d 10 10 m 50 10 l S\n[2 3] 1 d -10 20 m 50 20 l S\n[] 0 d 50 20 m 60 20 l S\n"},
        ContentRow{"OfAFarLineThePartThatIsSeen",
                   [](GraphicsContext& context) {
                       strokeLine(context, {1, 1}, {1e30, 1});
                       strokeLine(context, {1, 1}, {1, NAN});
                       strokeLine(context, {1e30, 1}, {1e30, 5});
                   },
                   "<g class=\"a\"><path d=\"m10 90h200\"/></g>\n", "0 0 0 RG 10 w 10 10 m 210 10 l S\n"},
        ContentRow{"Clipped",
                   [](GraphicsContext& context) {
                       context.saveState();
                       context.addRectangle({1, 1, 2, 2});
                       context.clipToPath();
                       strokeLine(context, {0, 0}, {5, 5});
                       context.restoreState();
                       strokeLine(context, {0, 0}, {5, 0});
                   },
                   "<clipPath id=\"clip0\"><path d=\"m10 90h20v-20h-20z\"/></clipPath><g clip-path=\"url(#clip0)\">\n"
                   "<g class=\"a\"><path d=\"m0 100 50-50\"/></g>\n</g>\n<g class=\"a\"><path d=\"m0 100h50\"/></g>\n",
                   "q 10 10 20 20 re W n\n0 0 0 RG 10 w 0 0 m 50 50 l S\nQ\n0 0 0 RG 10 w 0 0 m 50 0 l S\n"},
        ContentRow{"NothingInAClipThatIsLost",
                   [](GraphicsContext& context) {
                       context.addRectangle({0, 0, 1e30, 1});
                       context.clipToPath();
                       strokeALine(context);
                   },
                   "", ""},
        ContentRow{"DotOfRoundEnds",
                   [](GraphicsContext& context) {
                       context.setRoundLineCap();
                       strokeLine(context, {1, 1}, {1, 1});
                   },
                   "<g class=\"a\"><path d=\"m10 90h0\"/></g>\n", "0 0 0 RG 10 w 1 J 10 10 m 10 10 l S\n"}),
    [](const auto& row) { return row.param.name; });

TEST(VectorColors, AreHeldWithinWhatADeviceShows) {
    const auto draw = [](GraphicsContext& context) {
        context.setStrokeColor({-0.2, 1.2, NAN, 0.1});
        strokeALine(context);
    };
    EXPECT_THAT(textOf(svgPicture(20, 10, draw)), HasSubstr("stroke:#00ff00;stroke-opacity:.1;"));
    const std::string pdf = textOf(pdfPicture(20, 10, draw));
    EXPECT_THAT(contentOfPdf(pdf), HasSubstr("/a0 gs 0 1 0 RG"));
    EXPECT_THAT(pdf, HasSubstr("/a0 << /CA .1 /ca .1 >>"));
}

TEST(VectorArcs, AreCurvesOfAQuarterOfACircleAtMost) {
    const auto draw = [](GraphicsContext& context) {
        context.moveTo({11, 5});
        context.addArc({10, 5}, 1, 0, std::numbers::pi, false);
        context.strokePath();
    };
    const auto paths = pathsOfSvg(textOf(svgPicture(20, 10, draw)));
    ASSERT_EQ(paths.size(), 1U);
    using Points = std::vector<std::pair<double, double>>;
    EXPECT_EQ(paths[0].points, (Points{{550, 250}, {550, 250}, {500, 200}, {450, 250}}));  // fiftieths of a millimetre
}

// ---- relief

constexpr std::array<GradientStop, 3> ridge{{{0, {0, 0, 0, 1}}, {0.4, {1, 0, 0, 1}}, {1, {0, 0, 0, 1}}}};

/// A rectangle along a line, filled across it.
void drawRidge(GraphicsContext& context, GraphicsPoint start, double angle) {
    const GraphicsPoint along{3 * std::cos(angle), 3 * std::sin(angle)};
    const GraphicsPoint across{-std::sin(angle) / 4, std::cos(angle) / 4};
    context.saveState();
    context.moveTo(start);
    context.addLineTo({start.x + along.x, start.y + along.y});
    context.addLineTo({start.x + along.x + across.x, start.y + along.y + across.y});
    context.addLineTo({start.x + across.x, start.y + across.y});
    context.clipToPath();
    context.drawLinearGradient(ridge, start, {start.x + across.x, start.y + across.y});
    context.restoreState();
}

TEST(VectorGradients, AreSharedByShapesInAllDirections) {
    const auto draw = [](GraphicsContext& context) {
        for (int i = 0; i < 12; ++i) drawRidge(context, {10, 5}, i * std::numbers::pi / 6);
    };
    const std::string svg = textOf(svgPicture(20, 10, draw));
    const std::string gradient =
        "<linearGradient id=\"a\" gradientUnits=\"userSpaceOnUse\" x1=\"0\" y1=\"0\" x2=\"2.5\" y2=\"0\">"
        "<stop offset=\"0\" stop-color=\"#000000\" stop-opacity=\"0\"/>"
        "<stop offset=\"0\" stop-color=\"#000000\" stop-opacity=\"1\"/>"
        "<stop offset=\".4\" stop-color=\"#ff0000\" stop-opacity=\"1\"/>"
        "<stop offset=\"1\" stop-color=\"#000000\" stop-opacity=\"1\"/>"
        "<stop offset=\"1\" stop-color=\"#000000\" stop-opacity=\"1\"/>"
        "<stop offset=\"1\" stop-color=\"#000000\" stop-opacity=\"0\"/></linearGradient>\n";
    EXPECT_THAT(svg, HasSubstr(gradient));
    EXPECT_EQ(svg.find("<linearGradient"), svg.rfind("<linearGradient"));
    // Up the page, so that the gradient goes to the left.
    EXPECT_THAT(svg, HasSubstr("<path transform=\"translate(100 50)rotate(180)\" d=\"m0 0v30h2.5v-30\"/>"));
    EXPECT_EQ(pathsOfSvg(svg).size(), 12U);

    const std::string pdf = textOf(pdfPicture(20, 10, draw));
    EXPECT_THAT(pdf, HasSubstr("/s0 << /ShadingType 2 /ColorSpace /DeviceRGB /Coords [0 0 2.5 0] "));
    EXPECT_EQ(pdf.find("/ShadingType"), pdf.rfind("/ShadingType"));
    EXPECT_THAT(contentOfPdf(pdf), HasSubstr("q -1 0 0 -1 100 50 cm 0 0 m 0 -30 l 2.5 -30 l 2.5 0 l W n /s0 sh Q\n"));
}

TEST(VectorGradients, WithoutAClipFillThePage) {
    const auto draw = [](GraphicsContext& context) { context.drawLinearGradient(ridge, {0, 0}, {20, 0}); };
    EXPECT_THAT(textOf(svgPicture(20, 10, draw)), HasSubstr("rotate(0)\" d=\"m0-100h200v100h-200z\"/>"));
    EXPECT_THAT(contentOfPdf(textOf(pdfPicture(20, 10, draw))), HasSubstr("0 0 200 100 re W n /s0 sh Q\n"));
}

// ---- true places

TEST(VectorPlaces, AreTrueToAHundredthOfAMillimetre) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(0, 100);
    std::vector<GraphicsPoint> points;
    points.reserve(500);
    for (int i = 0; i < 500; ++i) points.push_back({place(random), place(random)});
    const auto draw = [&](GraphicsContext& context) {
        for (std::size_t i = 1; i < points.size(); ++i) strokeLine(context, points[i - 1], points[i]);
    };
    const auto paths = pathsOfSvg(textOf(svgPicture(100, 100, draw)));
    ASSERT_EQ(paths.size(), points.size() - 1);
    for (std::size_t i = 1; i < points.size(); ++i) {
        const auto [x, y] = paths[i - 1].points.at(1);
        EXPECT_NEAR(x / 50, points[i].x, 0.01 + 1e-9) << i;
        EXPECT_NEAR(100 - y / 50, points[i].y, 0.01 + 1e-9) << i;
    }
}

// ---- drawn again on the same place

std::size_t shapesOf(const Painter& painter) {
    return pathsOfSvg(textOf(svgPicture(20, 10, painter))).size();
}

TEST(ShapesDrawnAgain, AreDrawnOnce) {
    const auto toAndFro = [](GraphicsContext& context) {
        for (int i = 0; i < 50000; ++i) drawStitch(context, {i % 2 + 1.0, 1}, {2.0 - i % 2, 1});
    };
    EXPECT_EQ(shapesOf(toAndFro), 2U);
    EXPECT_LT(svgPicture(20, 10, toAndFro)->size(), 700U);
    EXPECT_LT(pdfPicture(20, 10, toAndFro)->size(), 1000U);
}

TEST(ShapesDrawnAgain, LieOnWhatWasDrawnMeanwhile) {
    const auto draw = [](GraphicsContext& context) {
        drawStitch(context, {1, 1}, {2, 1});
        drawStitch(context, {1.5, 0}, {1.5, 2});
        drawStitch(context, {1, 1}, {2, 1});
    };
    const auto paths = pathsOfSvg(textOf(svgPicture(20, 10, draw)));
    ASSERT_EQ(paths.size(), 4U);
    EXPECT_EQ(paths[1].points[0], std::pair(15.0, 100.0));
    EXPECT_EQ(paths[3].points[0], std::pair(10.0, 90.0));
}

TEST(ShapesDrawnAgain, AreKeptWhereTheyLetSomethingThrough) {
    const auto draw = [](GraphicsContext& context) {
        context.setStrokeColor({1, 0, 0, 0.5});
        for (int i = 0; i < 3; ++i) strokeLine(context, {1, 1}, {2, 1});
    };
    EXPECT_EQ(shapesOf(draw), 3U);
}

TEST(ShapesDrawnAgain, AreKeptWhereDashesOrInksDiffer) {
    const auto draw = [](GraphicsContext& context) {
        context.setLineDash(0, 0.2, 0.3);
        strokeLine(context, {1, 1}, {2, 1});
        strokeLine(context, {2, 1}, {1, 1});  // its dashes begin at the other end
        context.setLineDash(0.1, 0.2, 0.3);
        strokeLine(context, {1, 1}, {2, 1});
        context.setLineWidth(2);
        strokeLine(context, {1, 1}, {2, 1});
    };
    EXPECT_EQ(shapesOf(draw), 4U);
}

// ---- as it is made

void drawManyStitches(GraphicsContext& context) {
    for (int i = 0; i < 40000; ++i) drawStitch(context, {i % 199 * 0.1, i % 97 * 0.1}, {i % 193 * 0.1, i % 89 * 0.1});
}

class VectorStream : public testing::TestWithParam<bool (*)(double, double, const Painter&, const ByteSink&)> {};
TEST_P(VectorStream, ComesInPieces) {
    std::size_t most = 0;
    std::size_t sum = 0;
    const bool isWritten = GetParam()(20, 10, drawManyStitches, [&](std::span<const std::uint8_t> bytes) {
        most = std::max(most, bytes.size());
        sum += bytes.size();
        return true;
    });
    EXPECT_TRUE(isWritten);
    EXPECT_LE(most, 70000U);
    EXPECT_GT(sum, 3 * most);
}
TEST_P(VectorStream, EndsWhereTheSinkRefuses) {
    for (const int pieces : {0, 1, 3}) {
        int taken = 0;
        EXPECT_FALSE(
            GetParam()(20, 10, drawManyStitches, [&](std::span<const std::uint8_t>) { return ++taken <= pieces; }));
        EXPECT_EQ(taken, pieces + 1);  // nothing more is offered
    }
}
INSTANTIATE_TEST_SUITE_P(Kinds, VectorStream, testing::Values(writeSvgPicture, writePdfPicture),
                         [](const auto& row) { return row.index == 0 ? "svg" : "pdf"; });

}  // namespace
}  // namespace velamo
