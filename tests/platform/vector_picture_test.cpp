#include "platform/vector_picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace velamo {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string textOf(const std::optional<std::vector<std::uint8_t>>& bytes) {
    return bytes ? std::string(bytes->begin(), bytes->end()) : "(nothing)";
}

void strokeALine(GraphicsContext& context) {
    context.setLineWidth(0.5);
    context.moveTo({1, 2});
    context.addLineTo({11, 2});
    context.strokePath();
}

TEST(SvgPicture, IsInMillimetresWithTheOriginAtTheLowerLeft) {
    const std::string svg = textOf(svgPicture(38.6, 64, strokeALine));
    EXPECT_THAT(svg, HasSubstr("width=\"38.6mm\" height=\"64mm\" viewBox=\"0 0 38.6 64\""));
    EXPECT_THAT(svg, HasSubstr("stroke-width:0.5"));
    EXPECT_THAT(svg, testing::ContainsRegex("d=\"M 1 -?[26]2? L"));
    EXPECT_THAT(svg, HasSubstr("</svg>"));
}

TEST(PdfPicture, HasItsSizeInPoints) {
    const std::string pdf = textOf(pdfPicture(25.4, 50.8, strokeALine));
    EXPECT_THAT(pdf, StartsWith("%PDF-"));
    EXPECT_THAT(pdf, HasSubstr("/MediaBox [ 0 0 72 144 ]"));
    EXPECT_THAT(pdf, HasSubstr("%%EOF"));
}

TEST(VectorPicture, LineOfNoWidthIsThinAndThere) {
    const auto hairline = [](GraphicsContext& context) {
        context.setLineWidth(0);
        context.moveTo({0, 0});
        context.addLineTo({5, 5});
        context.strokePath();
    };
    EXPECT_THAT(textOf(svgPicture(10, 10, hairline)), HasSubstr("stroke-width:0.08"));
}

TEST(VectorPicture, NeedsASize) {
    for (const double length : {0.0, -5.0, static_cast<double>(NAN), static_cast<double>(INFINITY)}) {
        EXPECT_FALSE(svgPicture(length, 10, strokeALine)) << length;
        EXPECT_FALSE(pdfPicture(10, length, strokeALine)) << length;
    }
}

}  // namespace
}  // namespace velamo
